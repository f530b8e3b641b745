// Multicast groups: which ports each call names and in which numbering, and what of the driver's record is kept.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint32_t kGroup = 1;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kVid = 0xABCD0064;  // 100 in its low 16 bits
constexpr size_t kPortsAt = 12;
constexpr size_t kIndexAt = 76;
constexpr uint16_t kShownVid = 0xFFFE;

using Intfs = std::vector<uint32_t>;

const std::string kGet = std::string("User_mcast_port_get(unit=0, zero=0, key=") + kKey + ", vid=100)";

adp_status_t create(const Intfs &list) {
    return adp_create_igmpsn_group(kMac, kVid, static_cast<uint32_t>(list.size()), list.data());
}
adp_status_t add(const Intfs &list, uint32_t vid = kVid, const uint16_t *shown = nullptr) {
    return adp_add_igmpsn_member(kMac, vid, static_cast<uint32_t>(list.size()), list.data(), shown);
}
adp_status_t del(const Intfs &list) {
    return adp_del_igmpsn_member(kMac, kVid, static_cast<uint32_t>(list.size()), list.data());
}

/** A record as the driver reads it, with these first two words of ports. */
Block record(uint32_t word0, uint32_t word1) {
    return Block().fill().put(kPortsAt, word0).put(kPortsAt + 4, word1);
}

class Mcast : public L2Test {
  protected:
    void SetUp() override {
        L2Test::SetUp();
        keep("User_mcast_addr_add", "entry");
        keep("User_mcast_port_add", "entry");
        keep("User_mcast_port_remove", "entry");
    }
    static void script_read(const Block &block, int32_t result = 0) {
        driver().on("User_mcast_port_get").sets_bytes("entry", block.bytes()).returns(result);
    }
    /** The words of ports that create() and del() send for a list. */
    void expect_front_ports(const Intfs &list, uint32_t word0, uint32_t word1 = 0) {
        EXPECT_EQ(create(list), 0);
        EXPECT_THAT(kept(), ElementsAre(Block().put(kPortsAt, word0).put(kPortsAt + 4, word1).bytes()));
        EXPECT_EQ(del(list), 0);
        EXPECT_THAT(kept(), ElementsAre(Block().put(kPortsAt, word0).put(kPortsAt + 4, word1).bytes()));
    }
    static Trace names_of(const Trace &trace) {
        Trace names;
        for (const std::string &line : trace) {
            names.push_back(line.substr(0, line.find('(')));
        }
        return names;
    }
};

TEST_F(Mcast, CreatePreparesTheRecordThenAddsIt) {
    EXPECT_EQ(create({3}), 0);
    const Trace trace = driver().trace();
    ASSERT_EQ(trace.size(), 2u);
    EXPECT_EQ(trace[0], std::string("User_mcast_addr_t_init(unit=0, key=") + kKey + ", vid=100)");
    EXPECT_THAT(trace[1], ::testing::StartsWith("User_mcast_addr_add(unit=0, zero=0, entry="));
}

TEST_F(Mcast, CreateKeepsThePreparedRecordButForItsPorts) {
    driver().on("User_mcast_addr_t_init").does([](recording::Arguments &arguments) {
        auto *entry = static_cast<uint8_t *>(arguments.pointer("entry"));
        EXPECT_EQ(Bytes(entry, entry + kEntrySize), Bytes(kEntrySize));
        std::memcpy(entry, Block().fill().bytes().data(), kEntrySize);
        return -1;  // ignored
    });
    for (const Intfs &list : {Intfs{}, {3}, {0x20000001}}) {
        Block expected = Block().fill();
        for (size_t word = 0; word < 8; ++word) {
            expected.put(kPortsAt + 4 * word, word == 0 && list == Intfs{3} ? 1u << 3 : 0u);
        }
        EXPECT_EQ(create(list), 0);
        EXPECT_THAT(kept(), ElementsAre(expected.bytes()));
    }
}

TEST_F(Mcast, CreateAndDeleteNameUserPortsByTheirOwnNumbers) {
    expect_front_ports({3, 26, 1}, 1u << 1 | 1u << 3 | 1u << 26);
    expect_front_ports({0, 27, 31, 32, 63}, 1u << 0 | 1u << 27 | 1u << 31, 1u << 0 | 1u << 31);
    expect_front_ports({4, 64, 96, 0x0FFFFFFF}, 1u << 4);
    expect_front_ports({4, 4}, 1u << 4);
    library_test::drop_map();  // no translation, no map needed
    expect_front_ports({5}, 1u << 5);
}

TEST_F(Mcast, CreateAndDeleteNameAGroupsConfiguredMembers) {
    set_active(kGroup, {20, 21});
    set_configured(kGroup, 1u << 5 | 1u << 6);
    expect_front_ports({3, kAgg}, 1u << 3 | 1u << 5 | 1u << 6);
    expect_front_ports({kAgg, 3}, 1u << 3 | 1u << 5 | 1u << 6);
}

TEST_F(Mcast, CreateAndDeleteNameActiveMembersWhenNoneAreConfigured) {
    set_active(kGroup, {4, 29});
    expect_front_ports({kAgg}, 1u << 1 | 1u << 26);
    set_active(kGroup, {4, 0, 200, 6});  // the CPU port's row reads as an empty slot, port 200 as unmapped
    expect_front_ports({kAgg}, 1u << 1 | 1u << 3);
    set_active(kGroup, {4, 5, 6, 7, 8, 9, 10, 11, 12});  // nine fit a list of configured members
    expect_front_ports({kAgg}, 0x3FE);
}

TEST_F(Mcast, CreateAndDeleteNameNothingForAGroupWithoutAList) {
    expect_front_ports({kAgg}, 0);
    set_active(kGroup, {4});
    set_configured(kGroup, 0, 1);  // the second word is not read
    expect_front_ports({3, kAgg}, 1u << 3);
    set_configured(kGroup, 0x07FFFFFF);  // one more than a list has slots
    expect_front_ports({kAgg, 3}, 1u << 3);
}

TEST_F(Mcast, CreateAndDeleteSkipOtherTypes) {
    for (const uint32_t intf : kOtherTypes) {
        expect_front_ports({intf}, 0);
        expect_front_ports({3, intf, 4}, 1u << 3 | 1u << 4);
    }
}

TEST_F(Mcast, CreateReturnsTheAddsResultOnly) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        for (size_t failing = 0; failing < 2; ++failing) {
            driver().fail_call(failing, failure);
            EXPECT_EQ(create({3}), failing == 0 ? 0 : failure);
            EXPECT_THAT(names_of(driver().take()), ElementsAre("User_mcast_addr_t_init", "User_mcast_addr_add"));
        }
    }
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Mcast, DeleteGroupIsOneCall) {
    EXPECT_EQ(adp_delete_igmpsn_group(kMac, kVid), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre(std::string("User_mcast_addr_remove(unit=0, zero=0, key=") + kKey + ", vid=100)"));
    expect_results_passed_on("User_mcast_addr_remove", [] { return adp_delete_igmpsn_group(kMac, kVid); });
}

TEST_F(Mcast, IndexIsWrittenWhateverTheDriversResult) {
    uint32_t index = kNotWritten;
    for (const int32_t result : {0, -1, 77}) {
        script_read(record(0, 0).put(kIndexAt, 0x12345678u), result);
        index = kNotWritten;
        EXPECT_EQ(adp_get_igmpsn_group(kMac, kVid, &index), result);
        EXPECT_EQ(index, 0x12345678u);
        EXPECT_THAT(driver().take(), ElementsAre(kGet));
    }
    driver().fail_every("User_mcast_port_get", -9);
    EXPECT_EQ(adp_get_igmpsn_group(kMac, kVid, &index), -9);
    EXPECT_EQ(index, 0u);
}

TEST_F(Mcast, AddAppendsPhysicalPortsToTheExistingOnes) {
    script_read(record(1u << 9, 1u << 1));
    EXPECT_EQ(add({3, 26, 0}), 0);
    EXPECT_THAT(kept(), ElementsAre(record(1u << 9 | 1u << 6 | 1u << 29 | 1u << 0, 1u << 1).bytes()));
    const Trace trace = driver().trace();
    ASSERT_EQ(trace.size(), 2u);
    EXPECT_EQ(trace[0], kGet);
    EXPECT_THAT(trace[1], ::testing::StartsWith("User_mcast_port_add(unit=0, zero=0, entry="));
}

TEST_F(Mcast, AddReachesEveryWordAndDropsWhatIsOutside) {
    set_row(1, 255);
    set_row(2, 256);
    set_row(4, INT32_MAX);
    EXPECT_EQ(add({1, 2, 3, 4, 27}), 0);
    EXPECT_THAT(kept(), ElementsAre(Block().put(kPortsAt, 1u << 6).put(kPortsAt + 28, 1u << 31).bytes()));
}

TEST_F(Mcast, AddIgnoresGroups) {
    set_configured(kGroup, 1u << 5 | 1u << 6);
    for (const std::vector<uint8_t> &members :
         {std::vector<uint8_t>{}, {8, 9}, {8, 0, 9}, {4, 5, 6, 7, 8, 9, 10, 11, 12}}) {
        set_active(kGroup, members);
        script_read(record(1u << 9, 0));
        EXPECT_EQ(add({3, kAgg}), 0);
        EXPECT_EQ(add({kAgg}), 0);
        EXPECT_EQ(add({}), 0);
        EXPECT_THAT(kept(), ElementsAre(record(1u << 9 | 1u << 6, 0).bytes(), record(1u << 9, 0).bytes(),
                                        record(1u << 9, 0).bytes()));
    }
}

TEST_F(Mcast, AddRefusesOtherTypesAfterTheFetchAndBeforeTheUpdate) {
    const uint16_t shown = kShownVid;
    for (const uint32_t intf : kOtherTypes) {
        for (const Intfs &list : {Intfs{intf}, {3, intf}, {kAgg, intf, 3}}) {
            ::testing::internal::CaptureStderr();
            EXPECT_EQ(add(list), 201);
            EXPECT_THAT(driver().take(), ElementsAre(kGet));
            EXPECT_EQ(add(list, 0, &shown), 201);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
            EXPECT_EQ(driver().take().size(), 1u);
        }
    }
}

TEST_F(Mcast, AddWithVlanZeroPrintsAMessageAndStillReturnsTheDriversResult) {
    const uint16_t shown = kShownVid;
    for (const uint32_t vid : {0u, 0x10000u, 0xFFFF0000u}) {
        for (const int32_t result : {0, -1, 77}) {
            keep("User_mcast_port_add", "entry", result);
            ::testing::internal::CaptureStderr();
            EXPECT_EQ(add({3}, vid, &shown), result);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Mcast Add Port Error tVlanId = 0 *vid_p = 65534\n");
            EXPECT_THAT(names_of(driver().take()), ElementsAre("User_mcast_port_get", "User_mcast_port_add"));
        }
    }
}

TEST_F(Mcast, AddWithAVlanPrintsNothingAndIgnoresTheLastArgument) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(add({3}, 0x10001, nullptr), 0);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(Mcast, AddAndDeleteStartFromZeroWhenTheFetchFails) {
    driver().fail_every("User_mcast_port_get", -9);
    EXPECT_EQ(add({3}), 0);
    EXPECT_EQ(del({3}), 0);
    EXPECT_THAT(kept(), ElementsAre(Block().put(kPortsAt, 1u << 6).bytes(), Block().put(kPortsAt, 1u << 3).bytes()));
    EXPECT_THAT(names_of(driver().take()), ElementsAre("User_mcast_port_get", "User_mcast_port_add",
                                                       "User_mcast_port_get", "User_mcast_port_remove"));
}

TEST_F(Mcast, AddAndDeleteUseWhatAFailingFetchWrote) {
    script_read(record(1u << 9, 0), -9);
    EXPECT_EQ(add({3}), 0);
    EXPECT_EQ(del({3}), 0);
    EXPECT_THAT(kept(), ElementsAre(record(1u << 9 | 1u << 6, 0).bytes(), record(1u << 3, 0).bytes()));
}

TEST_F(Mcast, DeleteNamesThePortsThatLeave) {
    script_read(record(1u << 4 | 1u << 9, 1u << 7));
    EXPECT_EQ(del({4}), 0);
    EXPECT_EQ(del({0x20000001}), 0);
    EXPECT_EQ(del({}), 0);  // nothing is copied: the ports stay as they were read
    EXPECT_THAT(kept(), ElementsAre(record(1u << 4, 0).bytes(), record(0, 0).bytes(),
                                    record(1u << 4 | 1u << 9, 1u << 7).bytes()));
    const Trace trace = driver().trace();
    ASSERT_EQ(trace.size(), 6u);
    EXPECT_EQ(trace[0], kGet);
    EXPECT_THAT(trace[1], ::testing::StartsWith("User_mcast_port_remove(unit=0, zero=0, entry="));
}

TEST_F(Mcast, AddAndDeleteReturnTheUpdatesResult) {
    const std::string before = table_bytes();
    expect_results_passed_on("User_mcast_port_add", [] { return add({3}); });
    expect_results_passed_on("User_mcast_port_remove", [] { return del({3}); });
    EXPECT_EQ(table_bytes(), before);
}

TEST_F(Mcast, ListsWithAnUnknownGroupAreRefusedUpFront) {
    const uint16_t shown = kShownVid;
    for (const uint32_t group : kBadGroups) {
        for (const Intfs &list : {Intfs{group}, {3, group}, {kAgg, group, 3}}) {
            ::testing::internal::CaptureStderr();
            EXPECT_EQ(create(list), -1);
            EXPECT_EQ(add(list), -1);
            EXPECT_EQ(add(list, 0, &shown), -1);
            EXPECT_EQ(del(list), -1);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

}  // namespace
