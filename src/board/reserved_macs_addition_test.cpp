// Adding the reserved addresses at start-up: which entries are written, and which failures stop it.
#include "board/testing/reserved_macs.h"

namespace {

using namespace reserved_macs_test;

class ReservedMacsAddition : public ReservedMacsTest {};

TEST_F(ReservedMacsAddition, FillsAnEmptyTableFromEntry0) {
    expect_added_at(range(0, 15), 15);
}

TEST_F(ReservedMacsAddition, SkipsEntriesInUse) {
    start_with_free(range(10, 63));
    expect_added_at(range(10, 25), 25);
}

TEST_F(ReservedMacsAddition, FindsScatteredFreeEntries) {
    const std::vector<uint32_t> free_entries = {1, 4, 5, 9, 10, 17, 20, 21, 33, 34, 40, 47, 50, 58, 60, 63};
    start_with_free(free_entries);
    expect_added_at(free_entries, 63);
}

TEST_F(ReservedMacsAddition, SkipsItsOwnAddressesToo) {
    table_.entries.at(0) = reserved(0);
    table_.entries.at(2) = reserved(7);
    expect_added_at({1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, 17);
}

TEST_F(ReservedMacsAddition, TreatsAnyNonZeroByteAsInUse) {
    for (uint32_t byte = 0; byte < kFree.size(); ++byte) {
        table_.entries.at(byte).at(byte) = 0x01;
    }
    expect_added_at(range(6, 21), 21);
}

TEST_F(ReservedMacsAddition, WritesUnreadableEntries) {
    for (const int32_t failure : kFailures) {
        start_with_free(range(10, 63));
        table_.unreadable = {{0, failure}, {3, failure}, {12, failure}};
        expect_added_at({0, 3, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23}, 23);
    }
}

TEST_F(ReservedMacsAddition, WithFewerThanSixteenFreeEntriesSucceeds) {
    start_with_free({63});
    expect_added_at({63}, 63);
    start_with_free(range(49, 63));
    expect_added_at(range(49, 63), 63);
}

TEST_F(ReservedMacsAddition, ToAFullTableSucceeds) {
    start_with(kInUse);
    expect_added_at({}, 63);
}

/** A write of the add that fails: write number @p number, in a table whose entries are written from @p first on. */
struct FailedWrite {
    uint32_t first;
    uint32_t number;
    int32_t failure;
    int line;
};

std::vector<FailedWrite> failed_writes(int line) {
    std::vector<FailedWrite> writes;
    for (const uint32_t first : {0u, 10u, 48u}) {
        for (uint32_t number = 0; number < kAddresses; ++number) {
            writes.push_back({first, number, kFailures[number % std::size(kFailures)], line});
        }
    }
    return writes;
}

class ReservedMacsWrite : public ReservedMacsTest {
  protected:
    void expect_stopped(const FailedWrite &write) {
        const uint32_t index = write.first + write.number;
        table_.unwritable[index] = write.failure;
        auto expected = table_.entries;
        for (uint32_t number = 0; number < write.number; ++number) {
            expected.at(write.first + number) = reserved(number);
        }
        EXPECT_EQ(outcome_of(l2_user_entry_add_all_bpdu),
                  (Outcome{-1,
                           "l2_user_entry_add_all_bpdu " + std::to_string(write.line) +
                               " i = " + std::to_string(index) + " ERROR\n",
                           ""}));
        EXPECT_EQ(driver().trace(), walk(0, index, addresses_at(range(write.first, index))));
        EXPECT_EQ(table_.entries, expected);
    }
};

TEST_F(ReservedMacsWrite, IntoAFreeEntryThatFailsStopsTheAdd) {
    for (const FailedWrite &write : failed_writes(156)) {
        start_with_free(range(write.first, 63));
        expect_stopped(write);
    }
}

TEST_F(ReservedMacsWrite, IntoAnUnreadableEntryThatFailsStopsTheAdd) {
    for (const FailedWrite &write : failed_writes(172)) {
        start_with(kInUse);
        for (const uint32_t index : range(write.first, 63)) {
            table_.unreadable[index] = -1;
        }
        expect_stopped(write);
    }
}

}  // namespace
