/**
 * @file process.h
 * What the library knows about the process that it is loaded into, and the lines that it writes for it.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <atomic>
#include <string>

#include "tools/adptrace/record/session.h"
#include "tools/adptrace/record/sink.h"

namespace adptrace::record {

struct Process {
    Session session;
    Sink sink;
    std::string program; /**< as JSON text */
    std::string library; /**< the build id, as JSON text or null */
    char of[sizeof R"("of":-9223372036854775808,)"] =
        ""; /**< in every line, after its first member; empty in the first */
    std::atomic<bool> is_recorded{false};
    std::atomic<size_t> calls{0};
    std::atomic<uint32_t> threads{0};
    std::atomic<uint32_t> generation{1}; /**< another one in the child of a fork, whose calls and threads are others */
};

/** Set up by the first call, or as the library is loaded, whichever comes first. */
Process &process();
/** Null before that. */
Process *process_so_far();

inline bool is_recording(Process &each) {
    return each.is_recorded.load(std::memory_order_relaxed) && !each.sink.is_stopped();
}

/** Appends `"at":NUMBER`. */
void append_time(const Process &process, std::string &text);
void append_number(std::string &text, uint64_t number);

}  // namespace adptrace::record
