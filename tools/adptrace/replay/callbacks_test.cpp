// Callbacks, threads, and handles of lists.
#include <adp/agg.h>
#include <adp/pkt.h>
#include <gmock/gmock.h>

#include <set>
#include <thread>

#include "platform/netlink_api.h"
#include "tools/adptrace/replay/testing/fakes.h"

namespace callbacks_test {

using namespace adptrace::replay;
using testing::ElementsAre;

TEST(ReplayCallbacks, CallsWithinACallbackAreMadeInIt) {
    VlanLibrary library;
    FakeDriver driver;
    library.functions["adp_register_agg_event_cb"] = [&library](const void *const *arguments) -> int64_t {
        const auto callback = value_of<adp_agg_event_cb_t>(arguments[0]);
        library.functions["adp_agg_linkscan_handle"] = [callback](const void *const *) -> int64_t {
            user_vlan_create(0, 0, 1);
            const adp_agg_event_t event{};
            callback(&event);
            user_vlan_create(0, 0, 3);
            return 0;
        };
        return 0;
    };
    Text text;
    text.end(text.begin("adp_register_agg_event_cb", R"({"callback":"set"})"));
    const uint64_t outer = text.begin("adp_agg_linkscan_handle", R"({"intf":4,"is_up":1})");
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":1})", outer));
    const uint64_t inner = text.begin("adp_vlan_create", R"({"vid":2})", outer);
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":2})", inner)).end(inner);
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":3})", outer)).end(outer);
    const Played played = replay(text.recording(), library, &driver);
    EXPECT_EQ(played.said, "");
    EXPECT_EQ(played.outcome.library_calls, 3U);
    EXPECT_EQ(driver.asked.size(), 3U);
}

TEST(ReplayCallbacks, ACallbackThatIsNotMadeIsADifference) {
    VlanLibrary library;
    FakeDriver driver;
    Text text;
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":100})");
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":100})", outer));
    text.end(text.begin("adp_vlan_create", R"({"vid":2})", outer)).end(outer);
    EXPECT_EQ(replay(text.recording(), library, &driver).said,
              "line 6: call 3, adp_vlan_create, within call 1, adp_vlan_create: the call differs\n"
              "  recorded: adp_vlan_create {\"vid\":2}\n  replayed: no call\n");
}

TEST(ReplayCallbacks, TheReceiverOfLinkChangesMayCallTheDriverAndGivesTheRecordedResult) {
    FakeLibrary library;
    FakeDriver driver;
    adp_link_event_cb_t receiver = nullptr;
    library.functions["adp_linkscan_register"] = [&receiver](const void *const *arguments) -> int64_t {
        receiver = value_of<adp_link_event_cb_t>(arguments[0]);
        return 0;
    };
    library.functions["linkscan_handle_cb"] = [&receiver](const void *const *) -> int64_t { return receiver(0, 4, 1); };
    Text text;
    text.end(text.begin("adp_linkscan_register", R"({"handler":"set"})"));
    const uint64_t outer = text.begin("linkscan_handle_cb", R"({"unit":0,"port":4,"info":[0,0,0,1]})", 0, 2);
    text.end(text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":1})", outer, 2)).end(outer, "17");
    const Played played = replay(text.recording(), library, &driver);
    EXPECT_EQ(played.said, "");
    EXPECT_THAT(driver.asked, ElementsAre("user_vlan_create"));
}

TEST(ReplayCallbacks, EachThreadOfTheRecordingHasOneOfItsOwn) {
    FakeLibrary library;
    std::vector<std::thread::id> ids;
    library.functions["adp_igmp_init"] = [&ids](const void *const *) -> int64_t {
        ids.push_back(std::this_thread::get_id());
        return 0;
    };
    Text text;
    for (const uint32_t thread : {1U, 2U, 1U, 3U}) {
        text.end(text.begin("adp_igmp_init", "{}", 0, thread));
    }
    EXPECT_EQ(replay(text.recording(), library, nullptr).said, "");
    ASSERT_EQ(ids.size(), 4U);
    EXPECT_EQ(ids[0], ids[2]);
    EXPECT_EQ(std::set(ids.begin(), ids.end()).size(), 3U);
}

/** A library with lists whose handles the driver gives. */
struct ListLibrary : FakeLibrary {
    ListLibrary() {
        functions["adp_stg_list"] = [](const void *const *arguments) -> int64_t {
            return user_stg_list(0, 0, value_of<adp_word_t *>(arguments[0]), value_of<int32_t *>(arguments[1]));
        };
        functions["adp_stg_list_destroy"] = [](const void *const *arguments) -> int64_t {
            return user_stg_list_destroy(0, 0, value_of<adp_word_t>(arguments[0]), value_of<int32_t>(arguments[1]));
        };
    }
};

Text list_recording(const std::string &handle, const std::string &destroyed) {
    Text text("big", 32);
    const uint64_t first = text.begin("adp_stg_list", "{}");
    const std::string outputs = R"({"list":)" + handle + R"(,"count":2})";
    text.end(text.begin("user_stg_list", R"({"unit":0,"zero":0})", first), "0", outputs).end(first, "0", outputs);
    const std::string arguments = R"("list":)" + destroyed + R"(,"count":2})";
    const uint64_t second = text.begin("adp_stg_list_destroy", "{" + arguments);
    text.end(text.begin("user_stg_list_destroy", R"({"unit":0,"zero":0,)" + arguments, second)).end(second);
    return text;
}

TEST(ReplayCallbacks, HandlesOfListsArePairedWithThoseOfTheRecording) {
    ListLibrary library;
    FakeDriver driver;
    driver.functions["user_stg_list"] = [](const void *const *arguments) {
        *value_of<adp_word_t *>(arguments[2]) = 0x1234;
        *value_of<int32_t *>(arguments[3]) = 2;
        return 0;
    };
    adp_word_t destroyed = 0;
    driver.functions["user_stg_list_destroy"] = [&destroyed](const void *const *arguments) {
        destroyed = value_of<adp_word_t>(arguments[2]);
        return 0;
    };
    EXPECT_EQ(replay(list_recording("77", "77").recording(), library, &driver).said, "");
    EXPECT_EQ(destroyed, 0x1234U);
    EXPECT_EQ(replay(list_recording("77", "78").recording(), library, &driver).said, "");
    EXPECT_EQ(destroyed, 78U);
    EXPECT_EQ(replay(list_recording("77", "77").recording(), library, nullptr).said, "");
    EXPECT_EQ(replay_driver(list_recording("77", "77").recording(), driver).said, "");
    EXPECT_EQ(destroyed, 0x1234U);
}

}  // namespace callbacks_test
