/**
 * @file trace_file.h
 * The complete trace of a test program, in the file that ADP_TRACE_FILE names: every imported call with its result, and
 * every system call. It is the same on every machine, which is how the byte orders are compared.
 */
#pragma once

#include <string>

namespace trace_file {

/** Whether the environment asks for a trace. */
bool is_wanted();

/** A line with the numbers replaced that differ between machines though they mean the same: a socket's type. */
std::string portable(std::string line);

/** Appends a line, made portable. */
void write(const std::string &line);

}  // namespace trace_file
