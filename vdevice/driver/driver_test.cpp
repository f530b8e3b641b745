// The driver as a whole: which calls it carries out, and what every call refuses alike.
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "calls/describe.h"
#include "tests/support/likely_numbers.h"
#include "tests/support/plain_call.h"
#include "tests/support/random_call.h"
#include "vdevice/chip/testing/document.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace driver_test {

using calls::CallId;
using calls::Param;
using chip::Status;

class DriverAsAWhole : public test::DriverTest {
  protected:
    static void for_every_call(const std::function<void(CallId)> &check) {
        for (size_t number = 0; number < calls::kCallCount; ++number) {
            if (const auto id = static_cast<CallId>(number); is_answered(id)) {
                SCOPED_TRACE(calls::call(id).name);
                check(id);
            }
        }
    }
    static bool is_unit(const Param &param) {
        const std::string_view name = param.name;
        return !param.is_pointer() && (name == "unit" || name == "zero");
    }
    /** The arguments, but unit and zero 0. */
    static std::vector<const void *> of_this_unit(CallId id, const void *const *arguments) {
        static constexpr uint64_t kZero = 0;
        std::vector<const void *> list;
        for (const Param &param : calls::call(id).params) {
            list.push_back(is_unit(param) ? &kZero : arguments[list.size()]);
        }
        return list;
    }
    /** Makes each call once for each of these parameters, with another value for it. get_vlan_info() knows -1 only. */
    int expect_refused(const std::function<bool(const Param &)> &picks, const void *value, Status status) {
        int refused = 0;
        for_every_call([&](CallId id) {
            const auto &params = calls::call(id).params;
            for (size_t index = 0; index < params.size() && id != CallId::get_vlan_info; ++index) {
                if (picks(params[index])) {
                    const PlainCall call(id);
                    std::vector<const void *> arguments(call.arguments(), call.arguments() + params.size());
                    arguments[index] = value;
                    EXPECT_EQ(dispatch(driver_, id, arguments.data()), chip::code(status)) << params[index].name;
                    ++refused;
                }
            }
        });
        return refused;
    }
};

TEST_F(DriverAsAWhole, CarriesOutEveryCallButTheDocumentedOne) {
    std::vector<std::string> names;
    for_every_call([&](CallId id) {
        if (dispatch(driver_, id, PlainCall(id).arguments()) == kNotSupported) {
            names.emplace_back(calls::call(id).name);
        }
    });
    EXPECT_THAT(names, testing::ElementsAre("user_l2_mactable_fread"));
    for (const std::string &name : names) {
        chip::test::expect_row("mac-table.md", "| `" + name + "` | `not_supported`");
    }
}

TEST_F(DriverAsAWhole, RefusesAnotherUnit) {
    const uint64_t ones = ~uint64_t{0};
    EXPECT_GT(expect_refused(is_unit, &ones, Status::kBadUnit), 300);
}

TEST_F(DriverAsAWhole, RefusesANullAddress) {
    const auto is_needed = [](const Param &param) {
        return param.is_pointer() && !param.is_text() && !(param.element.is_ports && !param.is_written());
    };
    const void *const null = nullptr;
    EXPECT_GT(expect_refused(is_needed, static_cast<const void *>(&null), Status::kBadArgument), 100);
}

// get_group_by_interface() writes 0, no group, also when it refuses.
TEST_F(DriverAsAWhole, ARefusedCallWritesNothing) {
    constexpr uint64_t kRounds = 100;
    int refused = 0;
    for_every_call([&](CallId id) {
        for (uint64_t seed = 0; seed < kRounds && id != CallId::get_group_by_interface; ++seed) {
            random_call::LikelyNumbers numbers(seed);
            const random_call::RandomCall call(id, numbers);
            const std::vector<const void *> arguments = of_this_unit(id, call.arguments());
            const std::string before = calls::describe_result(id, arguments.data(), 0);
            if (dispatch(driver_, id, arguments.data()) < 0) {
                EXPECT_EQ(calls::describe_result(id, arguments.data(), 0), before);
                ++refused;
            }
        }
    });
    EXPECT_GT(refused, 10000);
}

}  // namespace driver_test
}  // namespace vdevice::driver
