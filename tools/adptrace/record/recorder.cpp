// Writes the lines of a call.
#include "tools/adptrace/record/recorder.h"

#include <algorithm>
#include <exception>

#include "calls/json_text.h"
#include "tools/adptrace/record/board.h"
#include "tools/adptrace/record/errno_guard.h"
#include "tools/adptrace/record/process.h"
#include "tools/adptrace/record/readable.h"

namespace adptrace::record {
namespace {

constexpr size_t kMostLine = size_t{1} << 20; /**< of a recording */

void append_start(const Process &process, std::string &line, const char *what, uint64_t number) {
    line.clear();
    line += what;
    append_number(line, number);
    line += ',';
    line += process.of;
}

/** Closes the line with what an argument list or the like has added, or without it where the line would be too long. */
void write(Process &process, std::string &line, size_t kept) {
    if (line.size() + sizeof "}\n" > kMostLine) {
        line.resize(kept);
        line += "{}";
    }
    line += "}\n";
    process.sink.write_line(line.data(), line.size());
}

bool has_outputs(std::span<const calls::Param> params) {
    return std::any_of(params.begin(), params.end(), [](const calls::Param &param) { return param.is_written(); });
}

void write_begin(Process &process, const Thread &thread, const Span &span, const RecordedCall &call) {
    std::string &line = thread.buffers->line;
    append_start(process, line, R"({"begin":)", span.number);
    append_place(process, thread, line);
    line += R"(,"call":")";
    line += call.name;
    line += R"(","arguments":)";
    const size_t kept = line.size();
    calls::append_arguments(line, call.params, span.blocks);
    write(process, line, kept);
}

void write_end(Process &process, const Thread &thread, const Span &span, const RecordedCall &call, int64_t result) {
    std::string &line = thread.buffers->line;
    append_start(process, line, R"({"end":)", span.number);
    append_time(process, line);
    line += R"(,"result":)";
    calls::append_result(line, call.result, call.layout, result);
    line += R"(,"outputs":)";
    const size_t kept = line.size();
    calls::append_outputs(line, call.params, span.blocks, span.before);
    write(process, line, kept);
}

}  // namespace

bool begin(Span &span, const RecordedCall &call, const void *const *arguments) noexcept try {
    const ErrnoGuard guard;
    Process &process = record::process();
    if (!is_recording(process)) {
        return false;
    }
    const Writing writing(span);
    if (!writing) {
        return false;
    }
    Thread &thread = writing.thread();
    enter(thread, span);
    span.depth = thread.depth;
    if (span.depth >= kMostDepth) {
        return false;
    }
    span.generation = thread.generation;
    span.blocks = calls::blocks_of(call.params, arguments);
    limit_to_readable(call.params, arguments, span.blocks);
    if (has_outputs(call.params)) {
        span.before = calls::copies_of(call.params, span.blocks, thread.buffers->copies[span.depth]);
    }
    if (call.is_library) {
        write_first_board(process, thread.buffers->line);
    }
    span.number = ++process.calls;
    write_begin(process, thread, span, call);
    thread.open[thread.depth++] = {&span, span.number};
    return true;
} catch (const std::exception &) {
    return false;  // no memory for the line
}

void end(Span &span, const RecordedCall &call, int64_t result) noexcept try {
    const ErrnoGuard guard;
    Process &process = record::process();
    Thread &thread = record::thread();
    if (thread.generation != span.generation || process.generation != span.generation) {
        return;  // the child of a fork, which has begun no call
    }
    thread.depth = span.depth;
    const Writing writing(span);
    if (!writing || !is_recording(process)) {
        return;
    }
    write_end(process, thread, span, call, result);
    if (call.is_library) {
        write_changed_board(process, thread.buffers->line);
    }
} catch (const std::exception &) {
    return;
}

}  // namespace adptrace::record
