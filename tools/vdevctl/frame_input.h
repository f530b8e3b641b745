// A frame as users give it: as hexadecimal digits, in a capture file, or either on standard input.
#pragma once

#include <stdint.h>
#include <stdio.h>

#include <span>
#include <string>
#include <vector>

namespace vdevctl {

using Octets = std::vector<uint8_t>;

/**
 * The frame that a word of the command line gives, of 1 to 65535 octets: "ff:ff:ff:...", FILE.pcap[:K],
 * FILE.pcapng[:K], or -[:K] for what is on the input. K is the number of the frame in the file, 1 by default. Throws a
 * std::runtime_error with a sentence if there is no such frame.
 */
Octets read_frame(const std::string &word, FILE *input);

/** Frame number K of a capture file, or the frame that digits give, from octets in memory; the name is for messages. */
Octets frame_in(std::span<const uint8_t> content, uint64_t number, const std::string &name);

}  // namespace vdevctl
