// The threads of the process.
#include "tools/adptrace/record/thread.h"

#include <pthread.h>
#include <signal.h>

#include <cstdlib>

#include "tools/adptrace/record/process.h"

namespace adptrace::record {
namespace {

constexpr size_t kMostKept = size_t{1} << 16; /**< octets that a thread keeps for its next line */

// In the memory that the loader has set aside for the libraries of the start: without a call, and without allocating.
[[gnu::tls_model("initial-exec")]] constinit thread_local Thread t_thread{};

pthread_key_t key;
pthread_once_t key_once = PTHREAD_ONCE_INIT;

void make_key() {
    pthread_key_create(&key, [](void *buffers) {
        t_thread.buffers = nullptr;
        delete static_cast<Buffers *>(buffers);
    });
}

bool is_on_signal_stack() {
    stack_t stack = {};
    return sigaltstack(nullptr, &stack) == 0 && (stack.ss_flags & SS_ONSTACK) != 0;
}

/**
 * Whether a call is gone from the stack without having returned, as when a handler jumps out of it (siglongjmp). The
 * stack grows downwards, so the place of a call within it is below its own.
 */
bool is_left(const Span *call, const Span *within) {
    return call < within + 1 && !is_on_signal_stack();
}

}  // namespace

void append_place(const Process &process, const Thread &thread, std::string &line) {
    if (thread.depth > 0) {
        line += R"("within":)";
        append_number(line, thread.open[thread.depth - 1].number);
        line += ',';
    }
    line += R"("thread":)";
    append_number(line, thread.number);
    line += ',';
    append_time(process, line);
}

Thread &thread() {
    return t_thread;
}

void enter(Thread &thread, const Span &span) {
    Process &process = record::process();
    if (thread.generation != process.generation) {
        thread.generation = process.generation;
        thread.number = 0;
        thread.depth = 0;
    }
    if (thread.number == 0) {
        thread.number = ++process.threads;
    }
    while (thread.depth > 0 && is_left(thread.open[thread.depth - 1].at, &span)) {
        --thread.depth;
    }
    if (thread.buffers == nullptr) {
        pthread_once(&key_once, make_key);
        thread.buffers = new Buffers;
        pthread_setspecific(key, thread.buffers);
    }
}

Writing::Writing(const Span &span)
    : thread_{t_thread}, is_free_{thread_.writing == nullptr || is_left(thread_.writing, &span)} {
    if (is_free_) {
        thread_.writing = &span;
    }
}

Writing::~Writing() {
    if (!is_free_) {
        return;
    }
    thread_.writing = nullptr;
    if (thread_.buffers != nullptr && thread_.buffers->line.capacity() > kMostKept) {
        std::string().swap(thread_.buffers->line);
    }
}

}  // namespace adptrace::record
