/**
 * @file libraries.h
 * Two small shared libraries for the call trace's test: one defines a few imported calls, the other makes them.
 */
#pragma once

#include <stdint.h>

extern "C" {

/** Creates VLANs 100 and 4095 and reads port 5; returns what it read. */
int32_t library_makes_calls();
int32_t library_logs(const char *text, int32_t number);
int32_t library_calls_what_is_missing();

/** The text that the logger was given last, formatted. */
const char *last_log_text();
}
