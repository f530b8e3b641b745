// Every exported function with each of its calls failing in turn, as the rows say what must happen then.
#include "tests/fault_injection/report.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace fault_injection {
namespace rows_test {

/** More would hide the first ones. */
constexpr size_t kComplaintsShown = 20;

Counts all;

void print(const std::string &what, const Counts &counts) {
    std::printf(
        "%s: %zu functions in %zu rows, %zu runs; failed: %zu driver and service calls, %zu system calls, "
        "%zu allocations; in %zu runs every driver call\n",
        what.c_str(), counts.functions.size(), counts.rows, counts.runs, counts.failed_calls,
        counts.failed_system_calls, counts.failed_allocations, counts.runs_without_driver);
}

class Total : public testing::Environment {
  public:
    void TearDown() override { print("together", all); }
};

class EveryFailingCall : public testing::TestWithParam<std::string> {
  protected:
    static void SetUpTestSuite() {
        static testing::Environment *const total = testing::AddGlobalTestEnvironment(new Total);
        ASSERT_NE(total, nullptr);
    }
};

TEST_P(EveryFailingCall, IsHandledAsItsRowSays) {
    const Report report = inject_failures(read_family(GetParam()));
    print(GetParam(), report.counts);
    all += report.counts;
    EXPECT_EQ(report.complaints.size(), 0U);
    for (size_t index = 0; index < std::min(kComplaintsShown, report.complaints.size()); ++index) {
        ADD_FAILURE() << report.complaints[index];
    }
}

INSTANTIATE_TEST_SUITE_P(FaultInjection, EveryFailingCall, testing::ValuesIn(family_names()),
                         [](const auto &family) { return family.param; });

TEST(Rows, NameEveryExportedFunctionAndNoOther) {
    std::set<std::string> rows;
    for (const std::string &name : family_names()) {
        for (const Row &row : read_family(name).rows) {
            rows.insert(row.function);
            EXPECT_NE(exported::find_call(row.function), nullptr) << row.where << ": no function " << row.function;
        }
    }
    for (const exported::Call &call : exported::calls()) {
        EXPECT_TRUE(call.function != nullptr) << call.name << " is not in the library under test";
        EXPECT_EQ(rows.count(call.name), 1U) << call.name << " has no row in tests/fault_injection/rows";
    }
}

TEST(Rows, MakeEveryImportedCallFail) {
    std::set<std::string> failing;
    for (const std::string &name : family_names()) {
        const std::set<std::string> calls = calls_that_fail(read_family(name));
        failing.insert(calls.begin(), calls.end());
    }
    for (const calls::Call &call : calls::calls()) {
        EXPECT_EQ(failing.count(call.name), 1U) << call.name << " fails in no row of tests/fault_injection/rows";
    }
    for (const std::string name : {"memory", "socket", "ioctl", "sendto", "close"}) {
        EXPECT_EQ(failing.count(name), 1U) << name << " fails in no row of tests/fault_injection/rows";
    }
}

}  // namespace rows_test
}  // namespace fault_injection
