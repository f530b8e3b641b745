// Entries of the MAC table: records added byte by byte, and readers that write their output even when the driver fails.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);

class MacEntry : public L2Test {
  protected:
    static Bytes record(uint32_t flags, int32_t port, int32_t trunk, uint16_t vid = 100) {
        return Block().put(0, flags).put_mac(4).put(10, vid).put(12, port).put(20, trunk).bytes();
    }
    static std::string get_call(const char *name = "user_mac_addr_get") {
        return std::string(name) + "(unit=0, key=" + kKey + ", vid=100)";
    }
    static void script_read(uint32_t flags, int32_t port, int32_t trunk, int32_t result = 0) {
        const Block block = Block().fill().put(0, flags).put(12, port).put(20, trunk);
        driver().on("user_mac_addr_get").sets_bytes("entry", block.bytes()).returns(result);
    }
    /** Row 5 alone has physical port 0. */
    static void move_port_zero_to_row_five() {
        set_row(0, 40);
        set_row(5, 0);
    }
};

TEST_F(MacEntry, AddOnAPortSendsItsPhysicalPort) {
    keep("user_mac_addr_add", "entry");
    EXPECT_EQ(adp_add_mac_addr(kMac, 3, 100, 0), 0);
    EXPECT_EQ(adp_add_mac_addr(kMac, 26, 0xABCDFFFF, 1), 0);
    EXPECT_EQ(adp_add_mac_addr(kMac, 27, 0x10000, 0), 0);
    EXPECT_THAT(kept(), ElementsAre(record(0, 6, 0), record(8, 29, 0, 0xFFFF), record(0, -1, 0, 0)));
    EXPECT_EQ(driver().count(), 3u);
    EXPECT_THAT(driver().trace().front(), ::testing::StartsWith("user_mac_addr_add(unit=0, entry="));
}

TEST_F(MacEntry, AddIsStaticOnlyForOneInTheLowByte) {
    keep("user_mac_addr_add", "entry");
    agg_manage_intf[kGroup - 1] = 5;
    for (const uint32_t is_static : {1u, 0x101u, 0xFFFFFF01u}) {
        EXPECT_EQ(adp_add_mac_addr(kMac, 3, 100, is_static), 0);
        EXPECT_EQ(adp_add_mac_addr(kMac, kAgg, 100, is_static), 0);
        EXPECT_THAT(kept(), ElementsAre(record(8, 6, 0), record(9, 8, 1))) << is_static;
    }
    for (const uint32_t is_static : {0u, 2u, 0x100u, 0xFFFFFFFFu}) {
        EXPECT_EQ(adp_add_mac_addr(kMac, 3, 100, is_static), 0);
        EXPECT_EQ(adp_add_mac_addr(kMac, kAgg, 100, is_static), 0);
        EXPECT_THAT(kept(), ElementsAre(record(0, 6, 0), record(1, 8, 1))) << is_static;
    }
}

TEST_F(MacEntry, AddOnAGroupSendsItsTrunkAndItsManagementPortWhateverItsMembers) {
    keep("user_mac_addr_add", "entry");
    for (const std::vector<uint8_t> &members : {std::vector<uint8_t>{}, {4, 0, 6}, {4, 5, 6, 7, 8, 9, 10, 11, 12}}) {
        set_active(kGroup, members);
        for (const auto &[manager, port] : {std::pair{5u, 8}, {0u, 0}, {200u, -1}}) {
            agg_manage_intf[kGroup - 1] = manager;
            EXPECT_EQ(adp_add_mac_addr(kMac, kAgg, 100, 1), 0);
            EXPECT_THAT(kept(), ElementsAre(record(9, port, 1)));
        }
    }
    agg_manage_intf[7] = 26;
    EXPECT_EQ(adp_add_mac_addr(kMac, ADP_AGG_INTF(8), 100, 0), 0);
    EXPECT_THAT(kept(), ElementsAre(record(1, 29, 7)));
}

TEST_F(MacEntry, AddRefusesUnknownGroups) {
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_add_mac_addr(kMac, group, 100, 1), -1) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacEntry, FilterSendsTheLowByteOfTheFlags) {
    keep("user_mac_addr_add", "entry");
    agg_manage_intf[kGroup - 1] = 5;  // not used: the trunk is enough
    EXPECT_EQ(adp_filter_mac_addr(3, kMac, 0x10064, 0xFFFFFF30), 0);
    EXPECT_EQ(adp_filter_mac_addr(kAgg, kMac, 100, 0x130), 0);
    EXPECT_EQ(adp_filter_mac_addr(kAgg, kMac, 100, 0x81), 0);
    EXPECT_EQ(adp_filter_mac_addr(27, kMac, 100, 0x100), 0);
    EXPECT_THAT(kept(), ElementsAre(record(0x30, 6, 0), record(0x31, 0, 1), record(0x81, 0, 1), record(0, -1, 0)));
}

TEST_F(MacEntry, FilterTakesAnyGroupsTrunkIdAsArithmetic) {
    keep("user_mac_addr_add", "entry");
    for (const uint32_t group : kBadGroups) {
        EXPECT_EQ(adp_filter_mac_addr(group, kMac, 100, 0), 0);
    }
    EXPECT_THAT(kept(), ElementsAre(record(1, 0, -1), record(1, 0, 8), record(1, 0, 0x0FFFFFFE)));
}

TEST_F(MacEntry, AddAndFilterRefuseOtherTypes) {
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(adp_add_mac_addr(kMac, intf, 100, 1), 201) << intf;
        EXPECT_EQ(adp_filter_mac_addr(intf, kMac, 100, 1), 201) << intf;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacEntry, AddAndFilterReturnTheDriversResultAndKeepNoState) {
    agg_manage_intf[kGroup - 1] = 5;
    const std::string before = table_bytes();
    for (const uint32_t intf : {3u, kAgg}) {
        expect_results_passed_on("user_mac_addr_add", [=] { return adp_add_mac_addr(kMac, intf, 100, 1); });
        expect_results_passed_on("user_mac_addr_add", [=] { return adp_filter_mac_addr(intf, kMac, 100, 1); });
    }
    expect_results_passed_on("user_mac_mcast_addr_add", [] { return adp_add_mac_mcast_addr(kMac, 2, 100, 1); });
    EXPECT_EQ(table_bytes(), before);
}

Bytes mcast_record(const std::vector<uint32_t> &words, uint16_t vid = 100) {
    Block block;
    block.put_mac(4).put(10, vid);
    for (size_t word = 0; word < words.size(); ++word) {
        block.put(36 + 4 * word, words[word]);
    }
    return block.bytes();
}

TEST_F(MacEntry, MulticastAddSendsPhysicalPorts) {
    keep("user_mac_mcast_addr_add", "entry");
    EXPECT_EQ(adp_add_mac_mcast_addr(kMac, 1u << 1 | 1u << 26, 0x70064, 1), 0);
    EXPECT_EQ(adp_add_mac_mcast_addr(kMac, ~uint64_t{0} << 27 | 1, 0, 0x101), 0);  // rows 27 and up do not exist
    EXPECT_THAT(kept(), ElementsAre(mcast_record({1u << 4 | 1u << 29}), mcast_record({1}, 0)));
    EXPECT_THAT(driver().trace().front(), ::testing::StartsWith("user_mac_mcast_addr_add(unit=0, entry="));
}

TEST_F(MacEntry, MulticastAddReachesEveryWordAndDropsWhatIsOutside) {
    library_test::make_default_map(70);
    set_row(40, 255);
    set_row(41, 256);
    set_row(42, -1);
    set_row(43, INT32_MAX);
    keep("user_mac_mcast_addr_add", "entry");
    EXPECT_EQ(adp_add_mac_mcast_addr(kMac, uint64_t{0xF} << 40 | uint64_t{1} << 63 | uint64_t{1} << 31, 100, 1), 0);
    EXPECT_THAT(kept(), ElementsAre(mcast_record({0, 1u << 2, 1u << 2, 0, 0, 0, 0, 1u << 31})));
}

TEST_F(MacEntry, MulticastAddActsOnKindOneOnly) {
    for (const uint32_t kind : {0u, 2u, 0xFFu, 0x100u}) {
        EXPECT_EQ(adp_add_mac_mcast_addr(kMac, 2, 100, kind), -1) << kind;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(MacEntry, GetCopiesTheRecordWithItsUserPort) {
    for (const auto &[port, intf] : {std::pair{29, 26}, {0, 0}, {4, 1}, {30, -1}, {-7, -1}}) {
        for (const int32_t result : {0, -1, 77}) {
            script_read(0x88, port, 3, result);  // the port is translated on a trunk's entry too
            adp_l2_entry_t entry = {};
            EXPECT_EQ(adp_get_mac_addr(kMac, 0xFFFF0064, &entry), result);
            EXPECT_EQ(bytes_of(entry), Block().fill().put(0, 0x88u).put(12, intf).put(20, 3).bytes());
            EXPECT_THAT(driver().take(), ElementsAre(get_call()));
        }
    }
}

TEST_F(MacEntry, GetMayReadTheAddressInsideTheCallersOwnEntry) {
    adp_l2_entry_t entry = {};
    std::memcpy(entry.mac, kMac, sizeof kMac);
    script_read(0, 6, 0);
    EXPECT_EQ(adp_get_mac_addr(entry.mac, 100, &entry), 0);
    EXPECT_THAT(driver().take(), ElementsAre(get_call()));
    EXPECT_EQ(entry.port, 3);
    std::memcpy(entry.mac, kMac, sizeof kMac);
    EXPECT_EQ(adp_get_mac_mcast_addr(entry.mac, 100, &entry), 0);
    EXPECT_THAT(driver().take(), ElementsAre(get_call("user_mac_mcast_addr_get")));
}

TEST_F(MacEntry, ReadersPassTheDriverAZeroedRecord) {
    for (const char *call : {"user_mac_addr_get", "user_mac_mcast_addr_get"}) {
        driver().on(call).does([](recording::Arguments &arguments) {
            const auto bytes = arguments.bytes("entry");
            EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), Bytes(kEntrySize));
            return 0;
        });
    }
    adp_l2_entry_t entry;
    std::memset(&entry, 0xAA, sizeof entry);
    uint32_t word = kNotWritten;
    EXPECT_EQ(adp_get_mac_addr(kMac, 100, &entry), 0);
    std::memset(&entry, 0xAA, sizeof entry);
    EXPECT_EQ(adp_get_mac_mcast_addr(kMac, 100, &entry), 0);
    EXPECT_EQ(adp_get_intf_by_addr(kMac, 100, &word), 0);
    EXPECT_EQ(adp_get_intf_flags_by_addr(kMac, 100, &word, &word), 0);
    EXPECT_EQ(adp_get_l2_index_by_addr(kMac, 100, &word), 0);
    EXPECT_EQ(driver().count(), 5u);
}

TEST_F(MacEntry, ReadersReturnTheZeroedRecordWhenAFailingDriverWritesNothing) {
    move_port_zero_to_row_five();
    for (const char *call : {"user_mac_addr_get", "user_mac_mcast_addr_get"}) {
        driver().fail_every(call, -9);
    }
    adp_l2_entry_t entry;
    std::memset(&entry, 0xAA, sizeof entry);
    EXPECT_EQ(adp_get_mac_addr(kMac, 100, &entry), -9);
    EXPECT_EQ(bytes_of(entry), Block().put(12, 5).bytes());
    std::memset(&entry, 0xAA, sizeof entry);
    EXPECT_EQ(adp_get_mac_mcast_addr(kMac, 100, &entry), -9);
    EXPECT_EQ(bytes_of(entry), Block().bytes());
    uint32_t intf = kNotWritten;
    uint32_t flags = kNotWritten;
    uint32_t index = kNotWritten;
    EXPECT_EQ(adp_get_intf_by_addr(kMac, 100, &intf), -9);
    EXPECT_EQ(intf, 5u);
    intf = kNotWritten;
    EXPECT_EQ(adp_get_intf_flags_by_addr(kMac, 100, &intf, &flags), -9);
    EXPECT_EQ(intf, 5u);
    EXPECT_EQ(flags, 0u);
    EXPECT_EQ(adp_get_l2_index_by_addr(kMac, 100, &index), -9);
    EXPECT_EQ(index, 0u);
}

TEST_F(MacEntry, WithoutAPortZeroInTheMapAFailedReadIsMinusOne) {
    set_row(0, 40);
    driver().fail_every("user_mac_addr_get");
    uint32_t intf = kNotWritten;
    EXPECT_EQ(adp_get_intf_by_addr(kMac, 100, &intf), -1);
    EXPECT_EQ(intf, 0xFFFFFFFF);
}

TEST_F(MacEntry, MulticastGetCopiesTheRecordUnchanged) {
    for (const int32_t result : {0, -1, 77}) {
        driver().on("user_mac_mcast_addr_get").sets_bytes("entry", Block().fill().bytes()).returns(result);
        adp_l2_entry_t entry = {};
        EXPECT_EQ(adp_get_mac_mcast_addr(kMac, 0x10064, &entry), result);
        EXPECT_EQ(bytes_of(entry), Block().fill().bytes());
        EXPECT_THAT(driver().take(), ElementsAre(get_call("user_mac_mcast_addr_get")));
    }
}

TEST_F(MacEntry, InterfaceIsTheTrunksGroupOrThePort) {
    struct Found {
        uint32_t flags;
        int32_t port;
        int32_t trunk;
        uint32_t intf;
    };
    for (const Found &found : {Found{0x80, 6, 0, 0x10000001},
                               {0xFFFFFFFF, 6, 7, 0x10000008},
                               {0x7F, 6, 7, 3},
                               {0x9, 29, 1, 26},
                               {0x100, 31, 1, 0xFFFFFFFF}}) {
        for (const int32_t result : {0, -1, 77}) {
            script_read(found.flags, found.port, found.trunk, result);
            uint32_t intf = kNotWritten;
            EXPECT_EQ(adp_get_intf_by_addr(kMac, 0x30064, &intf), result);
            EXPECT_EQ(intf, found.intf);
            intf = kNotWritten;
            uint32_t flags = kNotWritten;
            EXPECT_EQ(adp_get_intf_flags_by_addr(kMac, 0x30064, &intf, &flags), result);
            EXPECT_EQ(intf, found.intf);
            EXPECT_EQ(flags, found.flags);
            EXPECT_THAT(driver().take(), ElementsAre(get_call(), get_call()));
        }
    }
}

TEST_F(MacEntry, IndexIsTheWordAt32) {
    for (const int32_t result : {0, -1}) {
        driver()
            .on("user_mac_addr_get")
            .sets_bytes("entry", Block().fill().put(32, 0x12345678u).bytes())
            .returns(result);
        uint32_t index = kNotWritten;
        EXPECT_EQ(adp_get_l2_index_by_addr(kMac, 0xFFFF0064, &index), result);
        EXPECT_EQ(index, 0x12345678u);
        EXPECT_THAT(driver().take(), ElementsAre(get_call()));
    }
}

TEST_F(MacEntry, NextValidPassesItsWordsOnWhole) {
    adp_l2_entry_t entry = {};
    driver().on("user_netlink_mac_nextValidAddr_get").does([&](recording::Arguments &arguments) {
        EXPECT_EQ(arguments.word("index"), kWholeWord);
        EXPECT_EQ(arguments.word("option"), kWholeWord - 1);
        EXPECT_EQ(arguments.pointer("entry"), &entry);
        return 0;
    });
    EXPECT_EQ(adp_get_nextvalid_mac_addr(kWholeWord, &entry, 5, kWholeWord - 1), 0);
    EXPECT_EQ(driver().count(), 1u);
    expect_results_passed_on("user_netlink_mac_nextValidAddr_get",
                             [&] { return adp_get_nextvalid_mac_addr(1, &entry, 0, 2); });
}

}  // namespace
