// Shared by the tests of start-up: the driver's calls as the trace shows them.
#pragma once

#include <array>

#include "tests/support/library_test.h"
#include "tests/support/outcome.h"

namespace startup_test {

using library_test::Outcome;
using library_test::outcome_of;
using Lines = std::vector<std::string>;
using Mac = std::array<uint8_t, 6>;

constexpr uint32_t kEntries = 64;
constexpr uint32_t kAddresses = 16;
constexpr Mac kFree{};

/** A reserved bridge address, by its last byte. */
constexpr Mac reserved(uint32_t last) {
    return {0x01, 0x80, 0xC2, 0x00, 0x00, static_cast<uint8_t>(last)};
}

inline std::string mac_text(const Mac &mac) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const uint8_t byte : mac) {
        text += text.empty() ? "" : ":";
        text += kDigits[byte / 16];
        text += kDigits[byte % 16];
    }
    return text;
}

inline std::string read_line(uint32_t index) {
    return "user_l2_bpdu_get(unit=0, zero=0, index=" + std::to_string(index) + ")";
}

inline std::string write_line(uint32_t index, const Mac &mac) {
    return "user_l2_bpdu_set(unit=0, zero=0, index=" + std::to_string(index) + ", mac=" + mac_text(mac) + ")";
}

/** A call without arguments of its own. */
inline std::string line_of(const std::string &name) {
    return name + "(unit=0, zero=0)";
}

inline const std::string kReadIgmpToCpu = "user_switch_control_get(unit=0, zero=0, control=92)";

/** Start-up turns controls on only. */
inline std::string turn_on_line(uint32_t control) {
    return "user_switch_control_set(unit=0, zero=0, control=" + std::to_string(control) + ", value=1)";
}

inline Lines igmp_lines() {
    return {line_of("user_igmp_snooping_init"),
            line_of("User_mcast_init"),
            kReadIgmpToCpu,
            turn_on_line(215),
            turn_on_line(92),
            kReadIgmpToCpu};
}

inline Lines operator+(Lines first, const Lines &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/** The first @p count lines. */
inline Lines first_of(const Lines &lines, size_t count) {
    return {lines.begin(), lines.begin() + static_cast<Lines::difference_type>(count)};
}

}  // namespace startup_test
