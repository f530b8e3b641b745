// Random lives: the same calls give the same state, on any machine; and whatever a call can read is in the state.
#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <nlohmann/json.hpp>

#include "calls/describe.h"
#include "tests/support/likely_numbers.h"
#include "tests/support/trace_file.h"
#include "vdevice/state/state.h"
#include "vdevice/state/testing/prepared_device.h"

namespace vdevice::state {
namespace lives_test {

using calls::CallId;
using test::FreshDevice;
using test::PreparedDevice;

/** Makes a random call, and gives its result. */
class Life {
  public:
    explicit Life(uint64_t seed) : numbers_{seed}, choice_{seed} {}

    int64_t make_call(DriverCalls &driver) {
        CallId id{};
        do {
            id = static_cast<CallId>(choice_.below(calls::kCallCount));
        } while (!is_answered(id));
        const random_call::RandomCall call(id, numbers_);
        std::vector<const void *> arguments(call.arguments(), call.arguments() + calls::call(id).params.size());
        name_this_unit(id, arguments);
        return dispatch(driver, id, arguments.data());
    }

  private:
    /** All other units are refused, and so half of all calls would be. */
    static void name_this_unit(CallId id, std::vector<const void *> &arguments) {
        static constexpr uint64_t kZero = 0;
        const auto &params = calls::call(id).params;
        for (size_t index = 0; index < params.size(); ++index) {
            const std::string_view name = params[index].name;
            const bool is_unit = name == "unit" || name == "zero" || name == "handle";
            arguments[index] = is_unit && !params[index].is_pointer() ? &kZero : arguments[index];
        }
    }

    random_call::LikelyNumbers numbers_;
    random_call::Random choice_;
};

constexpr int kCalls = 2000;

class Lives : public testing::TestWithParam<uint64_t> {};

TEST_P(Lives, OfTheSameCallsGiveTheSameState) {
    Life life{GetParam()};
    Life again{GetParam()};
    PreparedDevice one;
    PreparedDevice other;
    int done = 0;
    for (int i = 0; i < kCalls; ++i) {
        const int64_t result = life.make_call(one.driver());
        ASSERT_EQ(again.make_call(other.driver()), result);
        done += result == driver::kOk ? 1 : 0;
    }
    EXPECT_GT(done, kCalls / 10);
    EXPECT_EQ(one.text(), other.text());
    EXPECT_NE(one.text(), PreparedDevice{}.text());
    if (trace_file::is_enabled()) {
        trace_file::write("== life " + std::to_string(GetParam()));
        trace_file::write(one.text());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Lives, testing::Range(uint64_t{1}, uint64_t{6}));

}  // namespace lives_test
}  // namespace vdevice::state
