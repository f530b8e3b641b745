/**
 * @file frames.h
 * Random frames, frame records and lists of destinations.
 */
#pragma once

#include <stdint.h>
#include <vector>

#include "tests/differential/arguments.h"

namespace differential {

/** Fills an Ethernet frame, mostly with what the receiver looks for. */
void fill_frame(Random &random, std::vector<uint8_t> &frame);

/** Fills the record of a frame that is received, or sent. */
void fill_received(Random &random, Slot &slot);
void fill_sent(Random &random, Slot &slot);

/** Fills a list of interfaces to send to. */
void fill_list(Random &random, Slot &slot);

}  // namespace differential
