// The table of reserved addresses at start-up: what is cleared, where the addresses go, and which failures stop it.
#include <map>

#include "board/testing/startup.h"

namespace {

using namespace startup_test;

constexpr Mac kInUse{0x02, 0x00, 0x00, 0x00, 0x00, 0x01};
constexpr int32_t kFailures[] = {-1, 1, -33, INT32_MIN};

/** The driver's table. A failing read still writes the entry, because only its result must count. */
class Table {
  public:
    /** Serves the driver's calls from this table. */
    void serve() {
        recording::driver().on("user_l2_bpdu_get").does([this](recording::Arguments &arguments) {
            const uint32_t index = arguments.u32("index");
            std::copy_n(entries.at(index).begin(), kFree.size(), static_cast<uint8_t *>(arguments.pointer("mac")));
            return unreadable.contains(index) ? unreadable.at(index) : 0;
        });
        recording::driver().on("user_l2_bpdu_set").does([this](recording::Arguments &arguments) {
            const uint32_t index = arguments.u32("index");
            if (unwritable.contains(index)) {
                return unwritable.at(index);
            }
            const auto mac = arguments.bytes("mac");
            std::copy(mac.begin(), mac.end(), entries.at(index).begin());
            return 0;
        });
    }

    std::array<Mac, kEntries> entries{};
    std::map<uint32_t, int32_t> unreadable; /**< the result of the read, by entry */
    std::map<uint32_t, int32_t> unwritable; /**< the result of the write, by entry */
};

class ReservedAddresses : public library_test::LibraryTest {
  protected:
    void SetUp() override { start_with(kFree); }

    /** A table with the same address in every entry, and an empty trace. */
    void start_with(const Mac &mac) {
        start_over();
        table_ = Table();
        table_.entries.fill(mac);
        table_.serve();
    }

    /** A table of which only some entries are free. */
    void start_with_free(const std::vector<uint32_t> &free_entries) {
        start_with(kInUse);
        for (const uint32_t index : free_entries) {
            table_.entries.at(index) = kFree;
        }
    }

    /** The trace of a walk that reads entries @p first to @p last and writes those in @p written. */
    static Lines walk(uint32_t first, uint32_t last, const std::map<uint32_t, Mac> &written) {
        Lines lines;
        for (uint32_t index = first; index <= last; ++index) {
            lines.push_back(read_line(index));
            if (written.contains(index)) {
                lines.push_back(write_line(index, written.at(index)));
            }
        }
        return lines;
    }

    /** The reserved addresses in order, in these entries. */
    static std::map<uint32_t, Mac> addresses_at(const std::vector<uint32_t> &entries) {
        std::map<uint32_t, Mac> written;
        for (const uint32_t index : entries) {
            written[index] = reserved(static_cast<uint32_t>(written.size()));
        }
        return written;
    }

    static std::vector<uint32_t> range(uint32_t first, uint32_t last) {
        std::vector<uint32_t> indices;
        for (uint32_t index = first; index <= last; ++index) {
            indices.push_back(index);
        }
        return indices;
    }

    /** Runs the add, which must succeed, write into these entries in order and stop reading at @p last. */
    void expect_added_at(const std::vector<uint32_t> &entries, uint32_t last) {
        auto expected = table_.entries;
        for (const auto &[index, mac] : addresses_at(entries)) {
            expected.at(index) = mac;
        }
        EXPECT_EQ(outcome_of(l2_user_entry_add_all_bpdu), Outcome{});
        EXPECT_EQ(driver().take(), walk(0, last, addresses_at(entries)));
        EXPECT_EQ(table_.entries, expected);
    }

    [[nodiscard]] uint32_t entries_in_use() const {
        return kEntries - static_cast<uint32_t>(std::count(table_.entries.begin(), table_.entries.end(), kFree));
    }

    Table table_;
};

TEST_F(ReservedAddresses, DeleteReadsTheWholeTable) {
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {}));
}

TEST_F(ReservedAddresses, DeleteClearsTheFirstAddressInAnyEntry) {
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

TEST_F(ReservedAddresses, DeleteClearsTheFirstAddressSeveralTimes) {
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

TEST_F(ReservedAddresses, DeleteLeavesTheOtherFifteen) {
    for (uint32_t last = 1; last < kAddresses; ++last) {
        table_.entries.at(last) = reserved(last);
    }
    const auto expected = table_.entries;
    table_.entries.at(40) = reserved(0);
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {{40, kFree}}));
    EXPECT_EQ(table_.entries, expected);
}

TEST_F(ReservedAddresses, DeleteComparesEveryByte) {
    for (uint32_t byte = 0; byte < kFree.size(); ++byte) {
        table_.entries.at(byte) = reserved(0);
        table_.entries.at(byte).at(byte) ^= 0x80;
    }
    EXPECT_EQ(outcome_of(l2_user_entry_del_all_bpdu), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {}));
}

TEST_F(ReservedAddresses, DeleteSkipsUnreadableEntries) {
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

TEST_F(ReservedAddresses, DeleteStopsAtTheFirstWriteThatFails) {
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

TEST_F(ReservedAddresses, AddFillsAnEmptyTableFromEntry0) {
    expect_added_at(range(0, 15), 15);
}

TEST_F(ReservedAddresses, AddSkipsEntriesInUse) {
    start_with_free(range(10, 63));
    expect_added_at(range(10, 25), 25);
}

TEST_F(ReservedAddresses, AddFindsScatteredFreeEntries) {
    const std::vector<uint32_t> free_entries = {1, 4, 5, 9, 10, 17, 20, 21, 33, 34, 40, 47, 50, 58, 60, 63};
    start_with_free(free_entries);
    expect_added_at(free_entries, 63);
}

TEST_F(ReservedAddresses, AddSkipsItsOwnAddressesToo) {
    table_.entries.at(0) = reserved(0);
    table_.entries.at(2) = reserved(7);
    expect_added_at({1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}, 17);
}

TEST_F(ReservedAddresses, AddTreatsAnyNonZeroByteAsInUse) {
    for (uint32_t byte = 0; byte < kFree.size(); ++byte) {
        table_.entries.at(byte).at(byte) = 0x01;
    }
    expect_added_at(range(6, 21), 21);
}

TEST_F(ReservedAddresses, AddWritesUnreadableEntries) {
    for (const int32_t failure : kFailures) {
        start_with_free(range(10, 63));
        table_.unreadable = {{0, failure}, {3, failure}, {12, failure}};
        expect_added_at({0, 3, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23}, 23);
    }
}

TEST_F(ReservedAddresses, AddWithFewerThanSixteenFreeEntriesSucceeds) {
    start_with_free({63});
    expect_added_at({63}, 63);
    start_with_free(range(49, 63));
    expect_added_at(range(49, 63), 63);
}

TEST_F(ReservedAddresses, AddToAFullTableSucceeds) {
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

class ReservedAddressesWrite : public ReservedAddresses {
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

TEST_F(ReservedAddressesWrite, IntoAFreeEntryThatFailsStopsTheAdd) {
    for (const FailedWrite &write : failed_writes(156)) {
        start_with_free(range(write.first, 63));
        expect_stopped(write);
    }
}

TEST_F(ReservedAddressesWrite, IntoAnUnreadableEntryThatFailsStopsTheAdd) {
    for (const FailedWrite &write : failed_writes(172)) {
        start_with(kInUse);
        for (const uint32_t index : range(write.first, 63)) {
            table_.unreadable[index] = -1;
        }
        expect_stopped(write);
    }
}

TEST_F(ReservedAddresses, InitDeletesThenAdds) {
    table_.entries.at(3) = reserved(0);
    EXPECT_EQ(outcome_of(l2_user_entry_init), Outcome{});
    EXPECT_EQ(driver().trace(), walk(0, 63, {{3, kFree}}) + walk(0, 15, addresses_at(range(0, 15))));
}

TEST_F(ReservedAddresses, InitAddsNothingWhenTheDeleteFails) {
    table_.entries.at(3) = reserved(0);
    table_.unwritable[3] = -9;
    EXPECT_EQ(outcome_of(l2_user_entry_init), (Outcome{-1,
                                                       "l2_user_entry_del_all_bpdu 96 ret = -9  i = 3 ERROR\n"
                                                       "l2_user_entry_init l2_user_entry_del_all_bpdu ERROR!\n",
                                                       ""}));
    EXPECT_EQ(driver().trace(), walk(0, 3, {{3, kFree}}));
}

TEST_F(ReservedAddresses, InitReportsThatTheAddFailed) {
    table_.unwritable[2] = 9;
    EXPECT_EQ(outcome_of(l2_user_entry_init), (Outcome{-1,
                                                       "l2_user_entry_add_all_bpdu 156 i = 2 ERROR\n"
                                                       "l2_user_entry_init l2_user_entry_add_all_bpdu  ERROR!\n",
                                                       ""}));
    EXPECT_EQ(driver().trace(), walk(0, 63, {}) + walk(0, 2, addresses_at(range(0, 2))));
}

TEST_F(ReservedAddresses, SecondInitAddsFifteenAgain) {
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

TEST_F(ReservedAddresses, RepeatedInitsFillTheTableAndThenOnlyRenewOneEntry) {
    Lines last_trace;
    for (const uint32_t in_use : {16u, 31u, 46u, 61u, 64u, 64u}) {
        EXPECT_EQ(outcome_of(l2_user_entry_init), Outcome{});
        EXPECT_EQ(entries_in_use(), in_use);
        last_trace = driver().take();
    }
    EXPECT_EQ(last_trace, walk(0, 63, {{0, kFree}}) + walk(0, 63, {{0, reserved(0)}}));
}

}  // namespace
