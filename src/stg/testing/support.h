// Shared by the tests of spanning-tree groups: expected lines of the trace, and reports whose source line is not
// compared, as it moves with every change above it.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "core/testing/group.h"
#include "tests/support/library_test.h"
#include "tests/support/outcome.h"

namespace stg_test {

using agg_test::calls;
using agg_test::Trace;
using library_test::Outcome;
using library_test::table_bytes;

inline constexpr uint32_t kNotWritten = 0xAAAAAAAA;
inline constexpr uint32_t kReleased = 4; /**< the state that the library itself sets */
inline constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};
inline constexpr uint32_t kOtherTypes[] = {0x20000001, 0x30000000, 0x70000002, 0xFFFFFFFF};
inline constexpr uint32_t kBadGroups[] = {ADP_AGG_INTF(0), ADP_AGG_INTF(9), 0x1FFFFFFF};

/** @name Expected lines of the trace */
/** @{ */
/** A call whose arguments are a group and, in @p rest, others. */
inline std::string on_group(const std::string &call, int32_t stg, const std::string &rest = "") {
    return call + "(unit=0, zero=0, stg=" + std::to_string(stg) + rest + ")";
}

inline std::string on_vlan(const std::string &call, int32_t stg, uint32_t vlan) {
    return on_group(call, stg, ", vid=" + std::to_string(vlan));
}

inline std::string vlan_add(int32_t stg, uint32_t vlan) {
    return on_vlan("user_stg_vlan_add", stg, vlan);
}

inline std::string vlan_remove(int32_t stg, uint32_t vlan) {
    return on_vlan("user_stg_vlan_remove", stg, vlan);
}

inline Trace state_sets(int32_t stg, const std::vector<int> &ports, uint32_t state) {
    Trace lines;
    for (const int port : ports) {
        lines.push_back(
            on_group("user_stg_stp_set", stg, ", port=" + std::to_string(port) + ", state=" + std::to_string(state)));
    }
    return lines;
}

inline std::string state_get(int32_t stg, int port) {
    return on_group("user_stg_stp_get", stg, ", port=" + std::to_string(port));
}

/** All user ports of the default board, in a group that VLANs have left. */
inline Trace releases(int32_t stg) {
    const agg_test::Ports ports = agg_test::first_ports(library_test::kUserPorts);
    return state_sets(stg, {ports.begin(), ports.end()}, kReleased);
}
/** @} */

/** The report with LINE for the digits after the function's name and a blank; unchanged if there are none. */
inline std::string without_line(std::string report) {
    const size_t blank = report.find(' ');
    if (blank == std::string::npos) {
        return report;
    }
    const size_t end = report.find_first_not_of("0123456789", blank + 1);
    if (end == std::string::npos || end == blank + 1) {
        return report;
    }
    return report.replace(blank + 1, end - blank - 1, "LINE");
}

/** The result and what is printed, without the source lines. */
template <typename Call>
Outcome reported_by(Call call) {
    Outcome outcome = library_test::outcome_of(call);
    for (std::string *stream : {&outcome.out, &outcome.err}) {
        std::string masked;
        for (size_t start = 0; start < stream->size();) {
            const size_t newline = std::min(stream->find('\n', start), stream->size() - 1);
            masked += without_line(stream->substr(start, newline + 1 - start));
            start = newline + 1;
        }
        *stream = masked;
    }
    return outcome;
}

class StgTest : public library_test::LibraryTest {
  protected:
    /** The whole map with only the named VLANs in groups. */
    static std::vector<int16_t> map_with(const std::vector<std::pair<uint32_t, int16_t>> &entries) {
        std::vector<int16_t> map(ADP_VLANS);
        for (const auto &[vlan, stg] : entries) {
            map[vlan] = stg;
        }
        return map;
    }

    static std::vector<int16_t> map() { return {aiVlanStg, aiVlanStg + ADP_VLANS}; }

    static void set_map(const std::vector<std::pair<uint32_t, int16_t>> &entries) {
        const std::vector<int16_t> rows = map_with(entries);
        std::copy(rows.begin(), rows.end(), aiVlanStg);
    }
};

}  // namespace stg_test
