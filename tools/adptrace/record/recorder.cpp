// Writes the lines of a call.
#include "tools/adptrace/record/recorder.h"

#include <algorithm>
#include <exception>

#include "calls/json_text.h"
#include "tools/adptrace/record/board.h"
#include "tools/adptrace/record/errno_guard.h"
#include "tools/adptrace/record/process.h"
#include "tools/adptrace/record/readable.h"

namespace adptrace {
namespace {

constexpr size_t kMostDepth = 64;              /**< of calls within calls that are recorded */
constexpr size_t kMostLine = size_t{1} << 20;  /**< of a recording */
constexpr size_t kMostOctets = size_t{1} << 16; /**< that are read where a number says how many there are */

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

/** A number that the call would refuse may count more than there is. */
void limit_to_readable(std::span<const calls::Param> params, calls::Blocks &blocks) {
    for (size_t index = 0; index < params.size(); ++index) {
        calls::Block &block = blocks[index];
        const calls::Param &param = params[index];
        if (param.counted_by != calls::kNotCounted && block.at != nullptr && block.count > 0) {
            const size_t octets = std::min(block.count, kMostOctets / param.element.size) * param.element.size;
            block.count = readable_octets(block.at, octets) / param.element.size;
        }
    }
}

bool is_written(std::span<const calls::Param> params) {
    return std::any_of(params.begin(), params.end(), [](const calls::Param &param) { return param.is_written(); });
}

std::vector<uint8_t> &copies_at(Buffers &buffers, size_t depth) {
    while (buffers.copies.size() <= depth) {
        buffers.copies.emplace_back();
    }
    return buffers.copies[depth];
}

void write_begin(Process &process, const Thread &thread, const Span &span, const RecordedCall &call) {
    std::string &line = thread.buffers->line;
    append_start(process, line, R"({"begin":)", span.number);
    if (span.outer != nullptr) {
        line += R"("within":)";
        append_number(line, span.outer->number);
        line += ',';
    }
    line += R"("thread":)";
    append_number(line, thread.number);
    line += ',';
    append_time(process, line);
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
    Process &process = adptrace::process();
    if (!is_recording(process)) {
        return false;
    }
    const Writing writing(span);
    if (!writing) {
        return false;
    }
    Thread &thread = writing.thread();
    enter(thread, span);
    span.outer = thread.innermost;
    span.depth = span.outer == nullptr ? 0 : span.outer->depth + 1;
    if (span.depth >= kMostDepth) {
        return false;
    }
    span.generation = thread.generation;
    span.blocks = calls::blocks_of(call.params, arguments);
    limit_to_readable(call.params, span.blocks);
    if (is_written(call.params)) {
        span.before = calls::copies_of(call.params, span.blocks, copies_at(*thread.buffers, span.depth));
    }
    if (call.is_library) {
        write_first_board(process, thread.buffers->line);
    }
    span.number = ++process.calls;
    write_begin(process, thread, span, call);
    thread.innermost = &span;
    return true;
} catch (const std::exception &) {
    return false;  // no memory for the line
}

void end(Span &span, const RecordedCall &call, int64_t result) noexcept try {
    const ErrnoGuard guard;
    Process &process = adptrace::process();
    Thread &thread = adptrace::thread();
    if (thread.generation != span.generation || process.generation != span.generation) {
        return;  // the child of a fork, which has begun no call
    }
    thread.innermost = span.outer;
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

}  // namespace adptrace
