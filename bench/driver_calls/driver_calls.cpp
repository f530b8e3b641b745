// bench_driver_calls KIND SECONDS: makes one driver call over and over, and prints how many there were.
//
// Without SECONDS it makes two calls, with a mark before each and behind: by these calls write(-1, ...) whoever traces
// system calls finds the second one's.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/driver_calls/clock.h"
#include "bench/driver_calls/kinds.h"

namespace {

constexpr int kNowhere = -1;

bool mark(std::string_view text) {
    return write(kNowhere, text.data(), text.size()) < 0;
}

bool make_marked_calls(const bench::Kind &kind) {
    // The first one opens the connection.
    return mark("first") && kind.call() && mark("second") && kind.call() && mark("end");
}

}  // namespace

int main(int argc, char **argv) {
    const bench::Kind *kind = argc > 1 ? bench::find_kind(argv[1]) : nullptr;
    if (kind == nullptr) {
        std::fprintf(stderr, "usage: bench_driver_calls KIND [SECONDS]\n");
        return 2;
    }
    const unsigned long long done = argc == 2 ? static_cast<unsigned long long>(make_marked_calls(*kind))
                                              : bench::repeat_for(std::strtod(argv[2], nullptr), kind->call);
    std::printf("%llu\n", done);
    return done > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
