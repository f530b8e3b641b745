/**
 * @file audit_fixture.h
 * An audit of the library's tables against the recording driver, which answers as a chip at power-on does.
 */
#pragma once

#include "tests/support/library_test.h"
#include "tools/adpsh/audit.h"
#include "tools/adpsh/execute.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace audit_fixture {

using Lines = std::vector<std::string>;

class AuditTest : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        answer_as_at_power_on();
    }

    void TearDown() override {
        driver().record(true);
        LibraryTest::TearDown();
    }

    static void answer_as_at_power_on() {
        driver().on("user_netlink_mac_nextValidAddr_get").returns(-1);
        driver().on("user_stg_stg_count_get").sets("count", 1U);
        driver().on("user_stg_each_time_list").sets("groups", {0U});
        driver().on("user_stg_default_get").sets("stg", 0U);
        has_vlans({});
    }

    /** The driver's groups. */
    static void has_groups(const std::vector<uint32_t> &groups) {
        driver().on("user_stg_stg_count_get").sets("count", groups.size());
        driver().on("user_stg_each_time_list").sets("groups", groups);
    }

    /** The VLANs that the driver lists in each group. */
    static void has_vlans(const std::map<int32_t, std::vector<uint16_t>> &vlans) {
        const auto of = [vlans](const recording::Arguments &arguments) {
            const auto group = vlans.find(arguments.i32("stg"));
            return group == vlans.end() ? std::vector<uint16_t>() : group->second;
        };
        driver().on("user_stg_vlan_count_get").does([of](recording::Arguments &arguments) {
            *static_cast<uint32_t *>(arguments.pointer("count")) = static_cast<uint32_t>(of(arguments).size());
            return 0;
        });
        driver().on("user_stg_vlan_each_time_list").does([of](recording::Arguments &arguments) {
            const std::vector<uint16_t> all = of(arguments);
            const size_t size = arguments.u32("chunk_size");
            const size_t first = std::min(arguments.u32("chunk_index") * size, all.size());
            std::copy_n(all.begin() + static_cast<ptrdiff_t>(first), std::min(size, all.size() - first),
                        static_cast<uint16_t *>(arguments.pointer("vids")));
            return 0;
        });
    }

    /** The entries of the driver's L2 table, in the order of their indexes. */
    static void has_addresses(std::vector<adp_l2_entry_t> entries) {
        driver().on("user_netlink_mac_nextValidAddr_get").does([entries](recording::Arguments &arguments) {
            for (const adp_l2_entry_t &entry : entries) {
                if (entry.index >= arguments.word("index")) {
                    *static_cast<adp_l2_entry_t *>(arguments.pointer("entry")) = entry;
                    return 0;
                }
            }
            return -1;
        });
    }

    /** Makes a call as the shell does, which follows it. */
    adp_status_t line(const std::string &text) {
        const adpsh::Command command = std::get<adpsh::Command>(adpsh::parse_line(text));
        adpsh::Outcome outcome;
        outcome.call = exported::find_call(command.name);
        outcome.arguments = std::make_unique<adpsh::Arguments>(*outcome.call, command, adpsh::Variables{});
        outcome.result = outcome.arguments->invoke();
        groups_.follow(outcome);
        return static_cast<adp_status_t>(outcome.result);
    }

    [[nodiscard]] adpsh::Audit audit() const { return adpsh::audit(tables_, groups_); }

    /** What an audit finds, a line each: `trunks: agg1: ...`. */
    [[nodiscard]] Lines found() const {
        Lines lines;
        const adpsh::Audit result = audit();
        for (const adpsh::Finding &finding : result.findings()) {
            const std::string text =
                finding.call.empty() ? finding.text : finding.call + " gave " + std::to_string(finding.result);
            lines.push_back(finding.topic + ": " + finding.place + ": " + text);
        }
        return lines;
    }

    adpsh::AuditTables tables_ = adpsh::loaded_tables();
    adpsh::MulticastGroups groups_;
};

}  // namespace audit_fixture
