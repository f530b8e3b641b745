/**
 * @file trace_file.h
 * The complete trace of a test program, in the file that ADP_TRACE_FILE names: every imported call with its result, and
 * every system call. It is the same on every machine, and compared between byte orders.
 */
#pragma once

#include <string>

namespace trace_file {

/** Whether the environment asks for a trace. */
bool is_enabled();

/** A line without the numbers that differ between machines: the type of a socket. */
std::string portable(std::string line);

/** Appends a line, made portable. */
void write(const std::string &line);

}  // namespace trace_file
