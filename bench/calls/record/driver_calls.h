/**
 * @file driver_calls.h
 * The driver's and the services' calls that a call of the library makes, written as C.
 */
#pragma once

#include <stddef.h>
#include <string>
#include <vector>

#include "bench/calls/record/blocks.h"

namespace record {

/** Lets every call of the recording driver succeed with zeros, or with what the file of answers says. */
void answer_from(const std::string &path);

/** Begins to write down the calls; their buffers go to @p blocks, where those of the library's call already are. */
void begin(Blocks &blocks);
/** The calls since then, as C expressions in their order. */
std::vector<std::string> finish();

/** How many calls have been made so far that leave the process when the device is another one. */
size_t remote_calls();

}  // namespace record
