// The table of reserved addresses at start-up: which entries are cleared, and that the addition follows.
#include "board/testing/reserved_macs.h"

namespace {

using namespace reserved_macs_test;

class ReservedMacsDeletion : public ReservedMacsTest {};

TEST_F(ReservedMacsDeletion, ReadsTheWholeTable) {
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {}));
}

TEST_F(ReservedMacsDeletion, ClearsTheFirstAddressInAnyEntry) {
    for (uint32_t index = 0; index < kEntries; ++index) {
        start_with(kInUse);
        auto expected = table_.entries;
        expected.at(index) = kFree;
        table_.entries.at(index) = reserved(0);
        EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
        EXPECT_EQ(driver().trace(), walk(0, 63, {{index, kFree}}));
        EXPECT_EQ(table_.entries, expected);
    }
}

TEST_F(ReservedMacsDeletion, ClearsTheFirstAddressSeveralTimes) {
    start_with(kInUse);
    auto expected = table_.entries;
    for (const uint32_t index : {0u, 1u, 30u, 63u}) {
        table_.entries.at(index) = reserved(0);
        expected.at(index) = kFree;
    }
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().take(), walk(0, 63, {{0, kFree}, {1, kFree}, {30, kFree}, {63, kFree}}));
    EXPECT_EQ(table_.entries, expected);

    start_with(reserved(0));
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(entries_in_use(), 0u);
}

TEST_F(ReservedMacsDeletion, LeavesTheOtherFifteen) {
    for (uint32_t last = 1; last < kAddresses; ++last) {
        table_.entries.at(last) = reserved(last);
    }
    const auto expected = table_.entries;
    table_.entries.at(40) = reserved(0);
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {{40, kFree}}));
    EXPECT_EQ(table_.entries, expected);
}

TEST_F(ReservedMacsDeletion, ComparesEveryByte) {
    for (uint32_t byte = 0; byte < kFree.size(); ++byte) {
        table_.entries.at(byte) = reserved(0);
        table_.entries.at(byte).at(byte) ^= 0x80;
    }
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {}));
}

TEST_F(ReservedMacsDeletion, SkipsUnreadableEntries) {
    for (const int32_t failure : kFailures) {
        start_with(reserved(0));
        for (uint32_t index = 0; index < kEntries; ++index) {
            table_.unreadable[index] = failure;
        }
        table_.unreadable.erase(5);
        EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
        EXPECT_EQ(driver().trace(), walk(0, 63, {{5, kFree}}));
        EXPECT_EQ(entries_in_use(), kEntries - 1);
    }
}

TEST_F(ReservedMacsDeletion, StopsAtTheFirstWriteThatFails) {
    for (uint32_t index = 0; index < kEntries; ++index) {
        start_with(reserved(0));
        const int32_t failure = kFailures[index % std::size(kFailures)];
        table_.unwritable[index] = failure;
        EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu),
                  (Outcome{-1,
                           "l2_user_entry_del_all_bpdu 96 ret = " + std::to_string(failure) +
                               "  i = " + std::to_string(index) + " ERROR\n",
                           ""}));
        std::map<uint32_t, Mac> written;
        for (const uint32_t cleared : range(0, index)) {
            written[cleared] = kFree;
        }
        EXPECT_EQ(driver().trace(), walk(0, index, written));
        EXPECT_EQ(entries_in_use(), kEntries - index);
    }
}

class ReservedMacsStart : public ReservedMacsTest {};

TEST_F(ReservedMacsStart, DeletesThenAdds) {
    table_.entries.at(3) = reserved(0);
    EXPECT_EQ(outcome_of(l2_user_entry_init), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {{3, kFree}}) + walk(0, 15, addresses_at(range(0, 15))));
}

TEST_F(ReservedMacsStart, AddsNothingWhenTheDeleteFails) {
    table_.entries.at(3) = reserved(0);
    table_.unwritable[3] = -9;
    EXPECT_EQ(outcome_of(l2_user_entry_init), (Outcome{-1,
                                                       "l2_user_entry_del_all_bpdu 96 ret = -9  i = 3 ERROR\n"
                                                       "l2_user_entry_init l2_user_entry_del_all_bpdu ERROR!\n",
                                                       ""}));
    EXPECT_EQ(driver().trace(), walk(0, 3, {{3, kFree}}));
}

TEST_F(ReservedMacsStart, ReportsThatTheAddFailed) {
    table_.unwritable[2] = 9;
    EXPECT_EQ(outcome_of(l2_user_entry_init), (Outcome{-1,
                                                       "l2_user_entry_add_all_bpdu 156 i = 2 ERROR\n"
                                                       "l2_user_entry_init l2_user_entry_add_all_bpdu  ERROR!\n",
                                                       ""}));
    EXPECT_EQ(driver().trace(), walk(0, 63, {}) + walk(0, 2, addresses_at(range(0, 2))));
}

TEST_F(ReservedMacsStart, SecondInitAddsFifteenAgain) {
    EXPECT_EQ(outcome_of(l2_user_entry_init), Outcome{});
    EXPECT_EQ(driver().take(), walk(0, 63, {}) + walk(0, 15, addresses_at(range(0, 15))));
    EXPECT_EQ(outcome_of(l2_user_entry_init), Outcome{});
    std::vector<uint32_t> entries = range(15, 30);
    entries.front() = 0;  // just cleared
    EXPECT_EQ(driver().trace(), walk(0, 63, {{0, kFree}}) + walk(0, 30, addresses_at(entries)));
    for (uint32_t number = 0; number < kAddresses; ++number) {
        EXPECT_EQ(table_.entries.at(number), reserved(number));
    }
    for (uint32_t number = 1; number < kAddresses; ++number) {
        EXPECT_EQ(table_.entries.at(15 + number), reserved(number));
    }
    EXPECT_EQ(entries_in_use(), 31u);
}

TEST_F(ReservedMacsStart, RepeatedInitsFillTheTableAndThenOnlyRenewOneEntry) {
    Lines last_trace;
    for (const uint32_t in_use : {16u, 31u, 46u, 61u, 64u, 64u}) {
        EXPECT_EQ(outcome_of(l2_user_entry_init), Outcome{});
        EXPECT_EQ(entries_in_use(), in_use);
        last_trace = driver().take();
    }
    EXPECT_EQ(last_trace, walk(0, 63, {{0, kFree}}) + walk(0, 63, {{0, reserved(0)}}));
}

}  // namespace
