// The refusals: distinct in number and name, none that could be taken for a lost call, and told in the document.
#include "vdevice/chip/frame/status.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "vdevice/chip/testing/document.h"

namespace vdevice::chip {
namespace status_test {

TEST(StatusTable, NumbersAndNamesAreDistinct) {
    std::set<int32_t> numbers;
    std::set<std::string> names;
    for (const StatusEntry &entry : status_table()) {
        EXPECT_TRUE(numbers.insert(code(entry.status)).second) << entry.name;
        EXPECT_TRUE(names.insert(entry.name).second) << entry.name;
        EXPECT_STREQ(describe(entry.status).name, entry.name);
    }
    EXPECT_EQ(numbers.count(-1), 0U) << "-1 says that a call did not arrive";
    EXPECT_STREQ(describe(static_cast<Status>(-1)).name, "unknown");
}

TEST(StatusTable, RefusalsAreNegative) {
    for (const StatusEntry &entry : status_table()) {
        EXPECT_EQ(code(entry.status) < 0, entry.status != Status::kOk) << entry.name;
    }
}

TEST(StatusTable, IsToldInTheDocument) {
    for (const StatusEntry &entry : status_table()) {
        test::expect_row("results.md", "| " + std::to_string(code(entry.status)) + " | `" + entry.name + "` | " +
                                           entry.meaning + " |");
    }
}

}  // namespace status_test
}  // namespace vdevice::chip
