// Shared by the tests of the reserved addresses: the driver's table of them, and walks over it.
#pragma once

#include <map>

#include "board/testing/startup.h"

namespace reserved_macs_test {

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

class ReservedMacsTest : public library_test::LibraryTest {
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

}  // namespace reserved_macs_test
