// Shared by the tests of groups: links of ports, an event receiver that writes to the driver's trace, and the calls
// that are expected there. Ports are physical ones; on the default board interface i is port i + 3.
#pragma once

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/group_tables.h"
#include "tests/support/library_test.h"

namespace agg_test {

using library_test::table_bytes;

using Intfs = std::vector<uint32_t>;
using Ports = std::vector<uint8_t>;
using Trace = std::vector<std::string>;

inline constexpr uint32_t kBadGroups[] = {0x10000000, 0x10000009, 0, 9, 0x1FFFFFFF, 0xFFFFFFFF};
inline constexpr char kAdd[] = "hal_add_agg_member_ex():393";
inline constexpr char kDel[] = "hal_del_agg_member_ex():564";

/** @name Expected lines of the trace */
/** @{ */
inline std::string on_port(const std::string &call, int port) {
    return call + "(unit=0, zero=0, port=" + std::to_string(port) + ")";
}

inline std::string on_trunk(const std::string &call, uint32_t group, const std::string &rest = "") {
    return call + "(unit=0, zero=0, trunk=" + std::to_string(group - 1) + rest + ")";
}

inline std::string record_text(int in_use, const Ports &ports) {
    std::string bytes;
    for (size_t i = 0; i < ADP_AGG_MEMBER_BYTES; ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%s%02x", i == 0 ? "" : ":", i < ports.size() ? unsigned{ports[i]} : 0u);
        bytes += hex;
    }
    return ", record={count=" + std::to_string(ports.size()) + ", in_use=" + std::to_string(in_use) +
           ", ports=" + bytes + "}";
}

inline std::string trunk_create(uint32_t group) {
    return on_trunk("user_trunk_create_id", group);
}

inline std::string trunk_destroy(uint32_t group) {
    return on_trunk("user_trunk_destroy", group);
}

/** The record of the hardware trunk: its in-use byte is 0 whatever the group's is. */
inline std::string trunk_set(uint32_t group, const Ports &ports) {
    return on_trunk("user_trunk_set", group, record_text(0, ports));
}

inline std::string to_kernel(uint32_t group, int in_use, const Ports &ports) {
    return on_trunk("user_trunk_send_data_to_kernel", group, record_text(in_use, ports));
}

inline Trace reads(const std::string &call, const Ports &ports) {
    Trace lines;
    for (const uint8_t port : ports) {
        lines.push_back(on_port(call, port));
    }
    return lines;
}

/** The links that the workers read. */
inline Trace link_reads(const Ports &ports) {
    return reads("user_port_link_status_get", ports);
}

/** The links that the election reads. */
inline Trace fibre_reads(const Ports &ports) {
    return reads("user_fiberport_link_status_get", ports);
}

/** An announcement with tracing off; with @p place given, tracing is on. */
inline Trace announced(uint32_t group, const std::string &word, const std::string &place = "") {
    const std::string text = "interface aggregateport " + std::to_string(group) + ", changed state to " + word;
    Trace lines = {"sys_trace_get()"};
    if (!place.empty()) {
        lines.push_back("sys_trace_add_log(prefix=\"" + place + "\", message=\"" + text + "\")");
    }
    lines.push_back(
        "Log_logging_func(level=5, module=5, word=\"UPDOWN\", format=\"interface %s %d, changed state to "
        "%s\", text=\"" +
        text + "\")");
    return lines;
}

/** The event of a group, with its state at that moment. */
inline std::string event(uint32_t group, int state) {
    return "event(word[" + std::to_string(15 + group) + "]=" + std::to_string(ADP_AGG_INTF(group)) +
           ", state=" + std::to_string(state) + ")";
}

inline void append(Trace *all, const std::string &line) {
    all->push_back(line);
}

inline void append(Trace *all, const Trace &lines) {
    all->insert(all->end(), lines.begin(), lines.end());
}

/** Lines and lists of lines, one after the other. */
template <typename... Part>
Trace calls(const Part &...part) {
    Trace all;
    (append(&all, part), ...);
    return all;
}
/** @} */

/** Ports 4, 5, 6 ... of the interfaces 1, 2, 3 ... */
inline Ports first_ports(size_t n) {
    Ports ports;
    for (size_t i = 0; i < n; ++i) {
        ports.push_back(static_cast<uint8_t>(i + 1 + library_test::kPortOffset));
    }
    return ports;
}

inline Intfs first_intfs(size_t n) {
    Intfs intfs;
    for (size_t i = 0; i < n; ++i) {
        intfs.push_back(static_cast<uint32_t>(i + 1));
    }
    return intfs;
}

inline uint32_t bits_of(const Intfs &intfs) {
    uint32_t word = 0;
    for (const uint32_t intf : intfs) {
        word |= 1u << intf;
    }
    return word;
}

class AggTest : public library_test::LibraryTest {
  protected:
    static constexpr int32_t kEventResult = 77;

    void SetUp() override { start(); }

    /** Cleared tables and driver, all links down, the receiver of events registered. */
    void start() {
        LibraryTest::SetUp();
        links_.clear();
        fibre_links_.clear();
        script_links(&links_, "user_port_link_status_get");
        script_links(&fibre_links_, "user_fiberport_link_status_get");
        adp_register_agg_event_cb(note_event);
    }

    /** The value that link attribute 11 reads on a physical port. */
    void set_link(int port, uint32_t status) { links_[port] = status; }
    /** The value that link attribute 14 reads. */
    void set_fibre_link(int port, uint32_t status) { fibre_links_[port] = status; }
    void set_links(const Ports &ports) {
        for (const uint8_t port : ports) {
            set_link(port, 1);
        }
    }

    static void set_record(uint32_t group, uint8_t in_use, const Ports &ports) {
        agg_info[group - 1] = {};
        agg_info[group - 1].in_use = in_use;
        set_active(group, ports);
    }

    /** Every table holds values, different ones for each group. */
    static void fill_tables() {
        for (uint32_t group = 1; group <= ADP_AGG_GROUPS; ++group) {
            const auto port = static_cast<uint8_t>(group + 3);
            set_record(group, 1, {port, static_cast<uint8_t>(port + 8), static_cast<uint8_t>(port + 16)});
            set_configured(group, 1u << group, group);
            agg_manage_intf[group - 1] = group + 8;
            adp::agg_link_status[group] = 1;
        }
        for (uint32_t intf = 0; intf <= library_test::kUserPorts; ++intf) {
            intf_map_trunk[intf] = ADP_AGG_INTF(1 + intf % 8);
        }
    }

    static Ports record_ports(uint32_t group) {
        const adp_agg_record_t &record = agg_info[group - 1];
        return {record.ports, record.ports + std::min(record.count, ADP_AGG_MEMBER_BYTES)};
    }

  private:
    static void script_links(const std::map<int, uint32_t> *links, const char *call) {
        driver().on(call).does([links](recording::Arguments &arguments) {
            const auto link = links->find(arguments.i32("port"));
            *static_cast<uint32_t *>(arguments.pointer("status")) = link == links->end() ? 0 : link->second;
            return 0;
        });
    }

    static int32_t note_event(const adp_agg_event_t *record) {
        std::string line = "event(";
        for (uint32_t i = 0; i < std::size(record->word); ++i) {
            if (record->word[i] != 0) {
                line += "word[" + std::to_string(i) + "]=" + std::to_string(record->word[i]) + ", ";
            }
        }
        const uint32_t *named = std::find_if(record->word, std::end(record->word), [](uint32_t word) { return word; });
        const uint32_t group = named == std::end(record->word) ? 0 : *named & ADP_INTF_INDEX_MASK;
        const bool is_group = group >= 1 && group <= ADP_AGG_GROUPS;
        driver().note(line + "state=" + (is_group ? std::to_string(adp::agg_link_status[group]) : "?") + ")");
        return kEventResult;
    }

    std::map<int, uint32_t> links_;
    std::map<int, uint32_t> fibre_links_;
};

}  // namespace agg_test
