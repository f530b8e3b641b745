// Every stub and every forwarder: a call made through a function's address reaches the stub with all its arguments.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "calls/describe.h"
#include "calls/invoke.h"
#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "tests/support/random_call.h"
#include "tests/support/recording_driver.h"

using calls::CallId;
using random_call::RandomCall;
using recording::driver;
using testing::ElementsAre;

namespace stubs_test {

constexpr uint64_t kRounds = 4;

// A reference that the compiler keeps: without one the linker does not take the stubs from their archive.
const auto volatile kTakesNetlinkApi = &user_vlan_create;
const auto volatile kTakesDeviceServices = &sys_trace_get;

TEST(Stubs, HandOnEveryArgumentOfEveryCall) {
    ASSERT_TRUE(kTakesNetlinkApi != nullptr && kTakesDeviceServices != nullptr);
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        const auto id = static_cast<CallId>(number);
        if (id == CallId::Log_logging_func) {
            continue;  // takes a format: its stub is written by hand and has its own tests
        }
        const char *name = calls::call(id).name;
        void *function = dlsym(RTLD_DEFAULT, name);
        ASSERT_NE(function, nullptr) << name;
        for (uint64_t round = 0; round < kRounds; ++round) {
            driver().reset();
            const uint64_t seed = number * kRounds + round;
            const bool is_text = calls::call(id).result == calls::Result::kText;
            const int32_t result = is_text ? 0 : random_call::random_result(id, seed);
            driver().on(name).returns(result);
            const RandomCall call(id, seed);
            EXPECT_EQ(calls::call_function(function, id, call.arguments()), result) << name;
            EXPECT_THAT(driver().trace(), ElementsAre(calls::describe_call(id, call.arguments())));
        }
    }
}

}  // namespace stubs_test
