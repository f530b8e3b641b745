// The limit on the size of files: the recording is written to in the program's process, and must not exceed it.
#include <sys/resource.h>
#include <sys/types.h>

#include "tools/adptrace/record/loaded.h"
#include "tools/adptrace/record/process.h"

namespace adptrace::record {
namespace {

template <typename Result>
Result then_read_limit(Result result) {
    if (Process *process = process_so_far(); process != nullptr) {
        process->sink.read_limit();
    }
    return result;
}

}  // namespace
}  // namespace adptrace::record

// By their names alone: their types are others in each C library.
extern "C" {

int adptrace_setrlimit(int resource, const void *limit) __asm__("setrlimit");
int adptrace_setrlimit64(int resource, const void *limit) __asm__("setrlimit64");
int adptrace_prlimit(pid_t process, int resource, const void *limit, void *before) __asm__("prlimit");
int adptrace_prlimit64(pid_t process, int resource, const void *limit, void *before) __asm__("prlimit64");

int adptrace_setrlimit(int resource, const void *limit) {
    return adptrace::record::then_read_limit(
        adptrace::record::next_function<decltype(&adptrace_setrlimit)>("setrlimit")(resource, limit));
}

int adptrace_setrlimit64(int resource, const void *limit) {
    return adptrace::record::then_read_limit(
        adptrace::record::next_function<decltype(&adptrace_setrlimit64)>("setrlimit64")(resource, limit));
}

int adptrace_prlimit(pid_t process, int resource, const void *limit, void *before) {
    return adptrace::record::then_read_limit(
        adptrace::record::next_function<decltype(&adptrace_prlimit)>("prlimit")(process, resource, limit, before));
}

int adptrace_prlimit64(pid_t process, int resource, const void *limit, void *before) {
    return adptrace::record::then_read_limit(
        adptrace::record::next_function<decltype(&adptrace_prlimit64)>("prlimit64")(process, resource, limit, before));
}

}  // extern "C"
