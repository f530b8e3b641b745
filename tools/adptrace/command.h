/**
 * @file command.h
 * The commands of adptrace: each in a folder of its own, all listed in main.cpp, and nowhere else.
 */
#pragma once

#include <span>
#include <stdexcept>
#include <string>

namespace adptrace {

/** A command line that cannot be understood, or work that cannot be done; what() is a sentence. */
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Command {
    const char *name;
    const char *arguments; /**< as the help shows them */
    const char *help;      /**< one line */
    /** As the command's own help shows them: `  -o, --output=FILE          What it does` or `      --keep-going  ...`,
     * a line each. */
    const char *options;
    /** Without the name. @return the exit status. It may throw a Refusal. */
    int (*run)(std::span<const std::string> arguments);
};

// Each is defined in the folder of its name; diff in compare/.
extern const Command kRecord;
extern const Command kShow;
extern const Command kStat;
extern const Command kReplay;
extern const Command kDiff;
extern const Command kReduce;

}  // namespace adptrace
