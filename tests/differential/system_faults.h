/**
 * @file system_faults.h
 * What fails in the system during a step, and a note of each system call.
 */
#pragma once

#include <stdint.h>
#include <string>

#include "tests/support/fake_system.h"

namespace differential {

/** Chooses a fault by the seed, mostly none, and sets the clock by the number of the step. */
void set_faults(fake_system::System &system, uint64_t seed, uint32_t number);

/** From now on nothing fails. */
void clear_faults(fake_system::System &system);

/** Notes a system call, and the frame that a sendto() has sent. */
void note_system_call(const fake_system::System &system, const std::string &line);

}  // namespace differential
