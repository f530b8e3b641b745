// The state as a whole: nothing that a driver call sets is missing, and nothing else makes a difference.
#include <gmock/gmock.h>

#include <set>
#include <string_view>

#include "tests/support/likely_numbers.h"
#include "vdevice/state/testing/changes.h"

namespace vdevice::state {
namespace state_test {

using calls::CallId;
using test::Change;
using test::FreshDevice;
using test::has_outputs;
using test::other_calls;
using test::PreparedDevice;

struct Stateless {
    const char *call;
    const char *reason;
};

/** Calls without outputs that set nothing of the state. */
constexpr Stateless kStateless[] = {
    {"user_field_set_select_tempate_idx", "there is one template"},
    {"user_qos_remark_inner_tag_src_init", "there is one source"},
    {"user_mac_table_show", "it writes into the log, which is history"},
    {"user_mac_mcast_table_show", "it writes into the log"},
    {"user_l2_mactable_fread", "no device carries it out"},
    {"user_is_mcast_addr_exist_by_vlan", "it asks"},
    {"user_is_mcast_addr_exist_vlan_is", "it asks"},
    {"user_check_set_mirror_disable", "it asks"},
    {"Log_logging_func", "it writes into the log"},
    {"sys_trace_get", "it asks"},
    {"sys_trace_add_log", "it writes into the log"},
    {"link_event_handle_cb", "it writes into the log"},
};

TEST(State, DiffersAfterEveryCallThatSetsSomething) {
    const std::string before = PreparedDevice{}.text();
    for (const Change &change : test::all_changes()) {
        SCOPED_TRACE(change.call);
        PreparedDevice device;
        EXPECT_GE(change.make(device), driver::kOk);
        EXPECT_NE(device.text(), before);
    }
}

TEST(State, EveryCallSetsSomethingOrReadsOrHoldsNoState) {
    std::set<std::string_view> stateless;
    for (const Stateless &row : kStateless) {
        stateless.insert(row.call);
    }
    for (const CallId id : other_calls()) {
        EXPECT_NE(has_outputs(id), stateless.erase(calls::call(id).name) == 1) << calls::call(id).name;
    }
    EXPECT_THAT(stateless, testing::IsEmpty());
}

TEST(State, CallsThatReadChangeNothing) {
    constexpr uint64_t kRounds = 20;
    PreparedDevice device;
    const std::string before = device.text();
    int done = 0;
    for (const CallId id : other_calls()) {
        for (uint64_t seed = 0; seed < kRounds; ++seed) {
            random_call::LikelyNumbers numbers(seed);
            const random_call::RandomCall call(id, numbers);
            done += dispatch(device.driver(), id, call.arguments()) == driver::kOk ? 1 : 0;
        }
    }
    EXPECT_EQ(device.text(), before);
    EXPECT_GT(done, 100);
}

TEST(State, HasNoTimesAndNoHistory) {
    FreshDevice one;
    FreshDevice other{std::chrono::hours{5}};
    EXPECT_EQ(one.text(), other.text());
    adp_word_t list = 0;
    int32_t count = 0;
    EXPECT_EQ(one.driver().user_stg_list(0, 0, &list, &count), driver::kOk);
    EXPECT_EQ(one.driver().user_stg_list_destroy(0, 0, list, count), driver::kOk);
    EXPECT_EQ(one.driver().user_vlan_create(0, 0, 9), driver::kOk);
    EXPECT_EQ(one.driver().user_vlan_destroy(0, 0, 9), driver::kOk);
    for (FreshDevice *device : {&one, &other}) {
        driver::Driver &driver = device->driver();
        EXPECT_EQ(driver.user_stg_list(0, 0, &list, &count), driver::kOk);
        EXPECT_EQ(driver.user_vlan_create(0, 0, test::kVid), driver::kOk);
        EXPECT_EQ(driver.user_mac_addr_add(0, test::address(test::station(1), 0, test::kPort)), driver::kOk);
    }
    EXPECT_EQ(one.text(), other.text());
}

TEST(State, OfQualifiersDoesNotDependOnTheirOrder) {
    FreshDevice one;
    FreshDevice other;
    for (FreshDevice *device : {&one, &other}) {
        EXPECT_EQ(device->driver().user_field_entry_create_id(0, 0, 9, 0), driver::kOk);
    }
    EXPECT_EQ(one.driver().user_field_qualify_DSCP(0, 0, 0, 1, 1), driver::kOk);
    EXPECT_EQ(one.driver().user_field_qualify_SrcIp(0, 0, 0, 1, 1), driver::kOk);
    EXPECT_EQ(other.driver().user_field_qualify_SrcIp(0, 0, 0, 1, 1), driver::kOk);
    EXPECT_NE(one.text(), other.text());
    EXPECT_EQ(other.driver().user_field_qualify_DSCP(0, 0, 0, 1, 1), driver::kOk);
    EXPECT_EQ(one.text(), other.text());
}

TEST(State, OfAFullDeviceIsNoLongerThanAnAnswer) {
    constexpr size_t kLongestAnswer = size_t{16} << 20;
    FreshDevice device;
    test::fill(device);
    const size_t length = device.compact_text().size();
    EXPECT_GT(length, kLongestAnswer / 8);
    EXPECT_LT(length, kLongestAnswer);
}

TEST(State, AfterPowerOnIsThatOfAFreshDevice) {
    EXPECT_EQ(PreparedDevice{}.power_on_text(), FreshDevice{}.text());
}

}  // namespace state_test
}  // namespace vdevice::state
