// The calls on translations, subnets and double tags. What they do to frames is tested on the chip.
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace tags_test {

using chip::Status;
using namespace test;

constexpr int32_t kMissing = chip::code(Status::kTagEntryMissing);
constexpr int32_t kExists = chip::code(Status::kTagEntryExists);
constexpr adp_word_t kKeep = ~adp_word_t{0};
constexpr adp_word_t kNet = 0xC0000200;
constexpr adp_word_t kMask = 0xFFFFFF00;

/** What a read writes, or what stood there before. */
struct Read {
    uint32_t vid = 99;
    uint32_t priority = 98;
    friend bool operator==(const Read &, const Read &) = default;
};

class DriverTags : public test::DriverTest {};

TEST_F(DriverTags, IngressTranslations) {
    Read read;
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 4, 0, 100, 200, 5), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 4, 0, 100, 201, 5), kExists);
    EXPECT_EQ(driver_.user_vlan_translate_get(0, 0, 4, 100, &read.vid, &read.priority), kOk);
    EXPECT_EQ(read, (Read{200, 5}));
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 5, 0, 100, 201, kKeep), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_get(0, 0, 5, 100, &read.vid, &read.priority), kOk);
    EXPECT_EQ(read, (Read{201, 0xFFFFFFFF}));
    EXPECT_EQ(driver_.user_vlan_translate_delete(0, 0, 0, 4, 100), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_delete(0, 0, 0, 4, 100), kMissing);
    EXPECT_EQ(driver_.user_vlan_translate_get(0, 0, 4, 100, &read.vid, &read.priority), kMissing);
    EXPECT_EQ(driver_.user_vlan_translate_delete_all(0, 0), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_get(0, 0, 5, 100, &read.vid, &read.priority), kMissing);
    EXPECT_EQ(read, (Read{201, 0xFFFFFFFF})) << "a refused read writes nothing";
}

TEST_F(DriverTags, EgressTranslationsAreATableOfTheirOwn) {
    Read read;
    EXPECT_EQ(driver_.user_vlan_translate_egress_add(0, 0, 0, 4, 200, 100, 5), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_egress_add(0, 0, 0, 4, 200, 101, 5), kExists);
    EXPECT_EQ(driver_.user_vlan_translate_get(0, 0, 4, 200, &read.vid, &read.priority), kMissing);
    EXPECT_EQ(driver_.user_vlan_translate_egress_get(0, 0, 4, 200, &read.vid, &read.priority), kOk);
    EXPECT_EQ(read, (Read{100, 5}));
    EXPECT_EQ(driver_.user_vlan_translate_delete_all(0, 0), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_egress_delete(0, 0, 0, 4, 200), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_egress_delete(0, 0, 0, 4, 200), kMissing);
    EXPECT_EQ(driver_.user_vlan_translate_egress_add(0, 0, 0, 4, 200, 100, 5), kOk);
    EXPECT_EQ(driver_.user_vlan_translate_egress_delete_all(0, 0), kOk);
    EXPECT_TRUE(chip_.tag_rules().egress.entries().empty());
}

TEST_F(DriverTags, TranslationsRefuseWhatHasNoMeaning) {
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 1, 4, 0, 100, 200, 0), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 4, 1, 100, 200, 0), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 4, 0, 100, 200, 8), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, kKeep, 0, 100, 200, 0), kNoPort);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 32, 0, 100, 200, 0), kNoPort);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 0, 0, 100, 200, 0), kCpuPort);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 4, 0, 0, 200, 0), kVlanRange);
    EXPECT_EQ(driver_.user_vlan_translate_add(0, 0, 0, 4, 0, 100, 4095, 0), kVlanRange);
    EXPECT_EQ(driver_.user_vlan_translate_delete(0, 0, 1, 4, 100), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_translate_egress_add(0, 0, 1, 4, 100, 200, 0), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_translate_egress_delete(0, 0, 1, 4, 100), kBadArgument);
    EXPECT_TRUE(chip_.tag_rules().ingress.entries().empty());
    EXPECT_TRUE(chip_.tag_rules().egress.entries().empty());
}

TEST_F(DriverTags, Subnets) {
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 4, kNet, kMask, 100, 3, 0), kOk);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 4, kNet, kMask, 101, 3, 0), kExists);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 5, kNet, kMask, 101, kKeep, 0), kOk);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 4, kNet + 1, kMask, 100, 3, 0), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 4, kNet, 0xFFFFFF01, 100, 3, 0), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 6, kNet, kMask, 100, 3, 1), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, 6, kNet, kMask, 0, 3, 0), kVlanRange);
    EXPECT_EQ(driver_.user_vlan_ip4_add(0, 0, kKeep, kNet, kMask, 100, 3, 0), kNoPort);
    EXPECT_EQ(chip_.tag_rules().subnets.list().size(), 2U);
    EXPECT_EQ(driver_.user_vlan_ip4_delete(0, 0, 4, kNet, kMask), kOk);
    EXPECT_EQ(driver_.user_vlan_ip4_delete(0, 0, 4, kNet, kMask), kMissing);
    EXPECT_EQ(driver_.user_vlan_ip4_delete_all(0, 0), kOk);
    EXPECT_TRUE(chip_.tag_rules().subnets.list().empty());
}

TEST_F(DriverTags, DoubleTagEntries) {
    Read read;
    EXPECT_EQ(driver_.user_vlan_dtag_add(0, 0, 0, 4, 0, 10, 500, 6), kOk);
    EXPECT_EQ(driver_.user_vlan_dtag_add(0, 0, 0, 4, 0, 10, 501, 6), kExists);
    EXPECT_EQ(driver_.user_vlan_dtag_add(0, 0, 1, 4, 0, 11, 501, 6), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_dtag_add(0, 0, 0, 4, 1, 11, 501, 6), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_dtag_add(0, 0, 0, -1, 0, 11, 501, 6), kNoPort);
    EXPECT_EQ(driver_.user_vlan_dtag_get(0, 0, 4, 10, &read.vid, &read.priority), kOk);
    EXPECT_EQ(read, (Read{500, 6}));
    EXPECT_EQ(driver_.user_vlan_dtag_get(0, 0, 0, 10, &read.vid, &read.priority), kCpuPort);
    EXPECT_EQ(driver_.user_vlan_dtag_delete(0, 0, 1, 4, 10), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_dtag_delete(0, 0, 0, 5, 10), kMissing);
    EXPECT_EQ(driver_.user_vlan_dtag_delete(0, 0, 0, 4, 10), kOk);
    ASSERT_EQ(driver_.user_vlan_dtag_add(0, 0, 0, 4, 0, 10, 501, kKeep), kOk);
    EXPECT_EQ(driver_.user_vlan_dtag_delete_all(0, 0), kOk);
    EXPECT_EQ(driver_.user_vlan_dtag_get(0, 0, 4, 10, &read.vid, &read.priority), kMissing);
}

TEST_F(DriverTags, ModesAndTpidsOfPorts) {
    uint32_t value = 99;
    for (const uint32_t mode : {1U, 2U, 0U}) {
        EXPECT_EQ(driver_.user_port_dtag_mode_set(0, 0, 4, mode), kOk);
        EXPECT_EQ(driver_.user_port_dtag_mode_get(0, 0, 4, &value), kOk);
        EXPECT_EQ(value, mode);
    }
    EXPECT_EQ(driver_.user_port_dtag_mode_set(0, 0, 4, 3), kBadArgument);
    EXPECT_EQ(driver_.user_port_tpid_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 0x8100U);
    for (const uint32_t tpid : {0x88A8U, 0x9100U, 0x0600U, 0xFFFFU}) {
        EXPECT_EQ(driver_.user_port_tpid_set(0, 0, 4, tpid, 7), kOk);
        EXPECT_EQ(driver_.user_port_tpid_get(0, 0, 4, &value), kOk);
        EXPECT_EQ(value, tpid);
    }
    for (const uint32_t tpid : {0U, 0x05FFU, 0x8874U, 0x10000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(driver_.user_port_tpid_set(0, 0, 4, tpid, 0), kBadArgument) << tpid;
    }
    EXPECT_EQ(chip_.port(4).tags.tpid, 0xFFFF);
    EXPECT_EQ(chip_.port(5).tags.tpid, 0x8100);
}

}  // namespace tags_test
}  // namespace vdevice::driver
