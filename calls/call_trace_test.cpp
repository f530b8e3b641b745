// The call trace as adpsh uses it: a library calls a driver library, and the program traces the calls.
#include "calls/call_trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "calls/testing/libraries.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace call_trace_test {

class CallTrace : public testing::Test {
  protected:
    void SetUp() override { call_trace::enabled = true; }
    void TearDown() override {
        call_trace::enabled = false;
        call_trace::take();
        call_trace::take_failure();
    }
};

TEST_F(CallTrace, ShowsALibrarysCallsWithResultsAndOutputs) {
    EXPECT_EQ(library_makes_calls(), 5);
    EXPECT_THAT(call_trace::take(), ElementsAre("user_vlan_create(unit=0, zero=0, vid=100) -> 0",
                                                "user_vlan_create(unit=0, zero=0, vid=4095) -> -4",
                                                "user_port_enable_get(unit=0, zero=0, port=5) -> 0 {enable=5}"));
    EXPECT_THAT(call_trace::take(), IsEmpty());
}

std::string_view name_of_result(int64_t result) {
    return result == -4 ? "refused" : "";
}

TEST_F(CallTrace, NamesResultsWhenItIsToldHow) {
    call_trace::name_of = name_of_result;
    library_makes_calls();
    call_trace::name_of = nullptr;
    EXPECT_THAT(call_trace::take(), Contains("user_vlan_create(unit=0, zero=0, vid=4095) -> -4 (refused)"));
}

TEST_F(CallTrace, RemembersTheLastFailureWhileItIsOffToo) {
    call_trace::enabled = false;
    library_makes_calls();
    const auto failure = call_trace::take_failure();
    ASSERT_TRUE(failure);
    EXPECT_STREQ(failure->call, "user_vlan_create");
    EXPECT_EQ(failure->result, -4);
    EXPECT_FALSE(failure->port);
    EXPECT_FALSE(call_trace::take_failure());
}

TEST_F(CallTrace, HandsLogMessagesOnFormatted) {
    EXPECT_EQ(library_logs("aggregateport", 2), 0);
    EXPECT_STREQ(last_log_text(), "interface aggregateport 2, 100%");
    EXPECT_THAT(call_trace::take(),
                ElementsAre("Log_logging_func(level=5, module=5, word=\"UPDOWN\", format=\"interface %s %d, 100%%\", "
                            "text=\"interface aggregateport 2, 100%\") -> 0"));
}

TEST_F(CallTrace, HandsCallsOnWithoutKeepingThemWhileItIsOff) {
    call_trace::enabled = false;
    EXPECT_EQ(library_makes_calls(), 5);
    EXPECT_THAT(call_trace::take(), IsEmpty());
}

TEST_F(CallTrace, FailsACallThatNoLibraryDefines) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(library_calls_what_is_missing(), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "call trace: no library defines user_vlan_destroy, so it fails.\n");
    EXPECT_THAT(call_trace::take(), ElementsAre("user_vlan_destroy(unit=0, zero=0, vid=100) -> -1"));
}

}  // namespace call_trace_test
