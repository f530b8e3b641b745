/*
 * Frames that the hosts send to the CPU.
 */
#pragma once

#include <stdbool.h>

/* From now on frames on "eth0" wait for receive_frames(). */
bool listen_on_cpu_port(void);

/* Prints the waiting frames, and those that follow within a second of each other; false if one is refused. */
bool receive_frames(void);
