/**
 * @file loaded.h
 * The libraries in the process, and what the calls' own names stand for in them.
 */
#pragma once

#include <dlfcn.h>
#include <atomic>
#include <string>

namespace adptrace::record {

/** What is loaded by now stays loaded. To be called before anything else here. */
void remember_loaded();

/** The build id in hexadecimal text, or nothing. */
std::string build_id_of_libadp();

/** The address of a name. One in a library that may be unloaded is looked up each time. */
class Symbol {
  public:
    /** The function behind this library's own; null if no library has it. */
    void *function(const char *name);
    /** Null if there is no such table. */
    void *table(const char *name);

  private:
    void *keep(void *address);

    std::atomic<void *> lasting_{nullptr}; /**< in a library that stays */
};

/** The C library's own function of a name that this library has, too. */
template <typename Function>
Function next_function(const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace adptrace::record
