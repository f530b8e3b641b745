// The driver calls that are measured.
#pragma once

#include <string>

namespace bench {

/** A call that gives true when it has done what it should. */
struct Kind {
    const char *name;
    bool (*call)();
};

/** The kind of this name, null if there is none. */
const Kind *find_kind(const std::string &name);

}  // namespace bench
