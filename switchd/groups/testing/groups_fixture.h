// For tests: groups on the recording driver, whose calls are compared in a short form.
#pragma once

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "switchd/groups/testing/stage.h"
#include "tests/support/library_test.h"

namespace switchd::test {

using Calls = std::vector<std::string>;
using Ports = std::set<uint32_t>;

/** "create 0" for user_trunk_create_id(unit=0, zero=0, trunk=0); of a record the members' ports. */
inline std::string short_form(const std::string &call) {
    static const std::map<std::string, std::string> kNames = {{"user_trunk_create_id", "create"},
                                                              {"user_trunk_destroy", "destroy"},
                                                              {"user_trunk_set", "set"},
                                                              {"user_trunk_loadbalance_set", "balance"},
                                                              {"user_trunk_trap_lacp", "trap"}};
    const auto name = kNames.find(call.substr(0, call.find('(')));
    if (name == kNames.end()) {
        return "";
    }
    const auto word = [&](const std::string &key, size_t length) {
        const size_t place = call.find(key);
        return place == std::string::npos ? "" : " " + call.substr(place + key.size(), length);
    };
    const size_t count = call.find("count=");
    const size_t members = count == std::string::npos ? 0 : static_cast<size_t>(call[count + 6] - '0');
    return name->second + word("trunk=", 1) + word("mode=", 1) + (members == 0 ? "" : word("ports=", 3 * members - 1));
}

class GroupsTest : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        for (const char *name : {"user_port_link_status_get", "user_fiberport_link_status_get"}) {
            driver().on(name).does([this](recording::Arguments &arguments) {
                const uint32_t user_port = arguments.u32("port") - library_test::kPortOffset;
                *static_cast<uint32_t *>(arguments.pointer("status")) = linked_.contains(user_port) ? 1 : 0;
                return 0;
            });
        }
        stage_.links_by([this](uint32_t port, bool is_up) {
            if (is_up) {
                linked_.insert(port);
            } else {
                linked_.erase(port);
            }
        });
        stage_.mirror_by([this] {
            driver().note("mirror");
            mirrored_idle_ = stage_.groups().idle_members();
        });
    }

    /** The calls on trunks since the last one, and the passes of the mirror. */
    static Calls calls() {
        Calls list;
        for (const std::string &call : driver().take()) {
            const std::string text = call == "mirror" ? call : short_form(call);
            if (!text.empty()) {
                list.push_back(text);
            }
        }
        return list;
    }

    static Calls calls_without_mirror() {
        Calls list = calls();
        std::erase(list, "mirror");
        return list;
    }

    /** agg1 with these ports, all in use. */
    void use(const std::vector<uint32_t> &ports) {
        stage_.plug(ports);
        stage_.configure({{1, lacp_group(ports)}});
        stage_.join_partner(ports);
        stage_.run(seconds(4));
        ASSERT_EQ(stage_.groups().idle_members(), Ports{});
        calls();
    }

    /** Another process: its library's tables are empty, and the chip has the trunk still. */
    static void start_over_library() {
        std::memset(agg_info, 0, sizeof agg_info);
        std::memset(agg_standby_members, 0, sizeof agg_standby_members);
        std::memset(agg_manage_intf, 0, sizeof agg_manage_intf);
        driver().once("user_trunk_create_id").returns(-7);
        calls();
    }

    Groups &groups() { return stage_.groups(); }

    Ports linked_;
    Ports mirrored_idle_;
    Stage stage_;
};

}  // namespace switchd::test
