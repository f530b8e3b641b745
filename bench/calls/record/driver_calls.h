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

/** Makes every call of the recording driver succeed, with outputs of zeros or those in the file of answers. */
void answer_from(const std::string &path);

/** Begins to record calls; their buffers are added to @p blocks, which has those of the library's call. */
void begin(Blocks &blocks);
/** The calls since then, as C expressions in their order. */
std::vector<std::string> finish();

/** The number of calls so far that go to the device in another process. */
size_t remote_calls();

}  // namespace record
