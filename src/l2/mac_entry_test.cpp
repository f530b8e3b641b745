// Entries of the MAC table: the words of a set of ports, and a record that holds the address that is read.
#include "tests/support/library_test.h"

namespace mac_entry_test {

using ::testing::ElementsAre;

constexpr uint8_t kMac[6] = {0x02, 0x1b, 0x21, 0xfe, 0x80, 0x07};
constexpr char kReadOfMac[] = "(unit=0, key=02:1b:21:fe:80:07:00:00, vid=100)";

class MacEntry : public library_test::LibraryTest {};

TEST_F(MacEntry, MulticastAddReachesEveryWordAndDropsWhatIsOutside) {
    library_test::make_default_map(70);
    intf_to_phy_port[40].phy = 255;
    intf_to_phy_port[41].phy = 256;
    intf_to_phy_port[42].phy = UINT32_MAX;
    intf_to_phy_port[43].phy = INT32_MAX;
    adp_l2_entry_t entry = {};
    driver().on("user_mac_mcast_addr_add").does([&](recording::Arguments &arguments) {
        const auto bytes = arguments.bytes("entry");
        EXPECT_EQ(bytes.size(), sizeof entry);
        std::memcpy(&entry, bytes.data(), sizeof entry);
        return 0;
    });
    EXPECT_EQ(adp_add_mac_mcast_addr(kMac, uint64_t{0xF} << 40 | uint64_t{1} << 63 | uint64_t{1} << 31, 100, 1), 0);
    uint32_t ports[8];
    std::memcpy(ports, reinterpret_cast<const uint8_t *>(&entry) + 36, sizeof ports);
    EXPECT_THAT(ports, ElementsAre(0, 1u << 2, 1u << 2, 0, 0, 0, 0, 1u << 31));
}

TEST_F(MacEntry, GetMayReadTheAddressInsideTheCallersOwnEntry) {
    adp_l2_entry_t entry = {};
    std::memcpy(entry.mac, kMac, sizeof kMac);
    EXPECT_EQ(adp_get_mac_addr(entry.mac, 100, &entry), 0);
    std::memcpy(entry.mac, kMac, sizeof kMac);
    EXPECT_EQ(adp_get_mac_mcast_addr(entry.mac, 100, &entry), 0);
    EXPECT_THAT(driver().trace(), ElementsAre(std::string("user_mac_addr_get") + kReadOfMac,
                                              std::string("user_mac_mcast_addr_get") + kReadOfMac));
}

}  // namespace mac_entry_test
