/**
 * @file program.h
 * The program that is recorded: found, started with the library in front, and waited for.
 */
#pragma once

#include <stdint.h>
#include <span>
#include <string>

#include "tools/adptrace/record/session.h"

namespace adptrace::record {

/** How the program ended. */
struct Ending {
    int64_t process = 0;
    int status = 0;
    int signal = 0; /**< that ended it, or 0 */
};

/** The file of a program, looked for as a shell does. Throws a Refusal. */
std::string program_file(const std::string &name);

/** The library that is loaded in front, beside this program or where it is installed. Throws a Refusal. */
std::string recorder_library();

/** Throws a Refusal if it cannot be started. */
Ending run_program(const std::string &file, std::span<const std::string> command, const std::string &library,
                   const std::string &recording, Session session);

}  // namespace adptrace::record
