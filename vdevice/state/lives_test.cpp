// Random lives: the same calls give the same state, on any machine; and whatever a call can read is in the state.
#include <gmock/gmock.h>

#include "calls/describe.h"
#include "tests/support/likely_numbers.h"
#include "tests/support/trace_file.h"
#include "vdevice/state/testing/changes.h"

namespace vdevice::state {
namespace lives_test {

using calls::CallId;
using test::PreparedDevice;

/** So few that calls often mean the same port, VLAN or entry. */
class FewNumbers final : public random_call::Source {
  public:
    explicit FewNumbers(uint64_t seed) : random_{seed} {}
    uint32_t next() override { return random_.below(kNumbers); }

  private:
    static constexpr uint32_t kNumbers = 12;
    random_call::Random random_;
};

/** Random calls with arguments from a source. */
template <typename Numbers>
class Life {
  public:
    explicit Life(uint64_t seed, std::vector<CallId> ids = {}) : numbers_{seed}, choice_{seed}, ids_{std::move(ids)} {}

    std::string make_call(DriverCalls &driver) {
        return make_call(driver, ids_[choice_.below(static_cast<uint32_t>(ids_.size()))]);
    }

    /** The call with its result and what it wrote. */
    std::string make_call(DriverCalls &driver, CallId id) {
        const random_call::RandomCall call(id, numbers_);
        std::vector<const void *> arguments(call.arguments(), call.arguments() + calls::call(id).params.size());
        name_this_unit(id, arguments);
        const int64_t result = dispatch(driver, id, arguments.data());
        done_ += result == driver::kOk ? 1 : 0;
        return calls::describe_call(id, arguments.data()) + calls::describe_result(id, arguments.data(), result);
    }

    /** Calls that succeeded. */
    int done() const { return done_; }

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

    Numbers numbers_;
    random_call::Random choice_;
    std::vector<CallId> ids_;
    int done_ = 0;
};

constexpr int kCalls = 2000;

class SeededLives : public testing::TestWithParam<uint64_t> {};

TEST_P(SeededLives, OfTheSameCallsGiveTheSameState) {
    Life<random_call::LikelyNumbers> life{GetParam(), test::answered_calls()};
    Life<random_call::LikelyNumbers> again{life};
    PreparedDevice one;
    PreparedDevice other;
    for (int i = 0; i < kCalls; ++i) {
        const std::string call = life.make_call(one.driver());
        ASSERT_EQ(again.make_call(other.driver()), call);
    }
    EXPECT_GT(life.done(), kCalls / 10);
    EXPECT_EQ(one.text(), other.text());
    EXPECT_NE(one.text(), PreparedDevice{}.text());
    if (trace_file::is_enabled()) {
        trace_file::write("== life " + std::to_string(GetParam()));
        trace_file::write(one.text());
    }
}

/** What calls that read say, each with many arguments. */
std::string readings(DriverCalls &driver) {
    constexpr uint64_t kRounds = 24;
    static const std::vector<CallId> kCallsThatRead = test::other_calls();
    std::string text;
    for (const CallId id : kCallsThatRead) {
        for (uint64_t seed = 0; test::has_outputs(id) && seed < kRounds; ++seed) {
            text += Life<FewNumbers>{seed}.make_call(driver, id) + "\n";
        }
    }
    return text;
}

TEST(Lives, NothingIsReadThatIsNotInTheState) {
    Life<FewNumbers> life{1, test::changing_calls()};
    PreparedDevice device;
    std::string before = readings(device.driver());
    std::string state = device.text();
    int changed = 0;
    while (life.done() < VDEVICE_CHANGES) {
        const int done = life.done();
        const std::string call = life.make_call(device.driver());
        std::string after = life.done() == done ? before : readings(device.driver());
        if (after != before) {
            std::string changed_state = device.text();
            EXPECT_NE(changed_state, state) << call;
            state = std::move(changed_state);
            before = std::move(after);
            ++changed;
        }
    }
    EXPECT_GT(changed, VDEVICE_CHANGES / 5);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SeededLives, testing::Range(uint64_t{1}, uint64_t{6}));

}  // namespace lives_test
}  // namespace vdevice::state
