/**
 * @file call_text.h
 * A call, a frame and what a process does, each on a line.
 */
#pragma once

#include <string>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/value_text.h"

namespace adptrace {

struct Style {
    Length length = Length::kShort;
    bool has_colours = false;
};

/** `adp_vlan_create(vid=100) = 0  (12 us)` */
std::string call_text(const Call &call, const Style &style);
/** `eth0 sent 64 octets 01:80:..` */
std::string frame_text(const Frame &frame, const Style &style);
std::string board_text(const Board &board);
std::string start_text(const Process &process);
std::string exit_text(const Process &process);
/** The program, when it ran, and on which kind of machine. */
std::string header_text(const Header &header);

}  // namespace adptrace
