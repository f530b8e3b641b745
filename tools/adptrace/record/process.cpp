// The process that is recorded: its start, and its children.
#include "tools/adptrace/record/process.h"

#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "calls/json_text.h"
#include "tools/adptrace/record/board.h"
#include "tools/adptrace/record/errno_guard.h"
#include "tools/adptrace/record/loaded.h"

namespace adptrace::record {
namespace {

std::atomic<Process *> the_process{nullptr};
pthread_once_t once = PTHREAD_ONCE_INIT;

bool read_session(Session &session, const char *text) {
    return text != nullptr && std::sscanf(text, kSessionFormat, &session.process, &session.began, &session.device,
                                          &session.inode, &session.follows, &session.frames) == kSessionNumbers;
}

void write_process_line(Process &each, pid_t parent) {
    std::string line = R"({"process":)";
    append_number(line, static_cast<uint64_t>(getpid()));
    line += R"(,"parent":)";
    append_number(line, static_cast<uint64_t>(parent));
    line += ',';
    append_time(each, line);
    line += R"(,"program":)" + each.program + R"(,"library":)" + each.library + "}\n";
    each.sink.write_line(line.data(), line.size());
}

void name_process(Process &each) {
    if (getpid() != each.session.process) {
        std::snprintf(each.of, sizeof each.of, R"("of":%)" PRId64 ",", static_cast<int64_t>(getpid()));
    }
}

/** The child of a fork is another process, which makes its calls anew from the first. */
void begin_child() noexcept try {
    const ErrnoGuard guard;
    Process &each = *process_so_far();
    ++each.generation;
    if (!each.is_recorded) {
        return;
    }
    if (each.session.follows == 0) {
        each.is_recorded = false;
        return;
    }
    each.calls = 0;
    each.threads = 0;
    forget_board();
    name_process(each);
    write_process_line(each, getppid());
} catch (const std::exception &) {
    process_so_far()->is_recorded = false;
}

void describe_program(Process &each) {
    std::array<char, PATH_MAX> name{};
    if (readlink("/proc/self/exe", name.data(), name.size() - 1) < 0) {
        name[0] = '\0';
    }
    calls::append_text(each.program, name.data());
    const std::string id = build_id_of_libadp();
    each.library = id.empty() ? "null" : '"' + id + '"';
}

void set_up() noexcept try {
    const ErrnoGuard guard;
    remember_loaded();
    auto *made = new Process;
    the_process = made;
    Process &each = *made;
    const char *file = secure_getenv(kFileVariable);
    if (file == nullptr || !read_session(each.session, secure_getenv(kSessionVariable))) {
        return;
    }
    const bool is_first = getpid() == each.session.process;
    if ((!is_first && each.session.follows == 0) || !each.sink.open(file, each.session.device, each.session.inode)) {
        return;
    }
    each.is_recorded = true;
    describe_program(each);
    name_process(each);
    write_process_line(each, is_first ? 0 : getppid());
    pthread_atfork(nullptr, nullptr, begin_child);
} catch (const std::exception &) {
    std::abort();  // not even the memory for this is there
}

[[gnu::constructor]] void start() {
    process();
}

}  // namespace

Process &process() {
    pthread_once(&once, set_up);
    return *process_so_far();
}

Process *process_so_far() {
    return the_process.load(std::memory_order_acquire);
}

void append_number(std::string &text, uint64_t number) {
    std::array<char, sizeof "18446744073709551615"> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), end);
}

void append_time(const Process &process, std::string &text) {
    text += R"("at":)";
    append_number(text, static_cast<uint64_t>(nanoseconds_now() - process.session.began));
}

}  // namespace adptrace::record
