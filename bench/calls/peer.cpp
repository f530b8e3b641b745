// The other end of the shipped driver's socket: answers each request at once, with success. It ends when its standard
// input does, and says how many calls it has answered: peer SOCKET.
#include <poll.h>
#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "platform/call_table.h"
#include "platform/invoke.h"
#include "vdevice/remote/server.h"

extern "C" void *const instant_calls[];

namespace {

int64_t answer(platform::CallId id, const void *const *arguments) {
    // The logger takes a format, which the caller's side has already made a text.
    return id == platform::CallId::Log_logging_func
               ? 0
               : platform::call_function(instant_calls[static_cast<std::size_t>(id)], id, arguments);
}

/** A caller that has asked goes on until it waits, so that every call takes the same way through its driver. */
void never_interrupt_a_caller() {
    const sched_param parameters{};
    sched_setscheduler(0, SCHED_BATCH, &parameters);
}

void serve(vdevice::remote::Server &server) {
    enum { kInput, kServer, kPolled };
    constexpr int kWithoutLimit = -1;
    for (;;) {
        pollfd ready[kPolled] = {{0, POLLIN, 0}, {server.poll_fd(), POLLIN, 0}};
        poll(ready, kPolled, kWithoutLimit);
        if (ready[kServer].revents != 0) {
            server.serve_ready();
        } else if (ready[kInput].revents != 0) {
            return;
        }
    }
}

}  // namespace

int main(int count, char **arguments) {
    constexpr int kArguments = 2;
    if (count != kArguments) {
        std::fprintf(stderr, "usage: peer SOCKET\n");
        return EXIT_FAILURE;
    }
    try {
        never_interrupt_a_caller();
        vdevice::remote::Server server(answer, arguments[1]);
        std::printf("ready\n");
        std::fflush(stdout);
        serve(server);
        std::printf("%llu\n", static_cast<unsigned long long>(server.counters().calls));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "peer: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
