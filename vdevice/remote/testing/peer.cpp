// One end of a conversation between two builds: `remote_peer serve PATH` and `remote_peer call PATH`. Both ends know
// every call's arguments and answers beforehand from the same seeds, so each checks what the other end made of them.
#include <poll.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "calls/describe.h"
#include "tests/support/random_call.h"
#include "vdevice/remote/client.h"
#include "vdevice/remote/server.h"

namespace {

using calls::CallId;
using calls::describe_call;
using calls::describe_result;
using random_call::random_result;
using random_call::RandomCall;
using random_call::write_outputs;

constexpr uint64_t kRounds = 4;
constexpr std::chrono::seconds kPatience{60};
constexpr int kPollMilliseconds = 100;

uint64_t seed_of(CallId id, uint64_t round) {
    return static_cast<uint64_t>(id) * kRounds + round;
}

uint64_t expected_calls() {
    uint64_t count = 0;
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        count += vdevice::is_answered(static_cast<CallId>(number)) ? kRounds : 0;
    }
    return count;
}

bool is_same(const std::string &here, const std::string &there) {
    if (here != there) {
        std::printf("expected %s\nreceived %s\n", here.c_str(), there.c_str());
    }
    return here == there;
}

int serve(const std::string &path) {
    std::vector<uint64_t> rounds(calls::kCallCount, 0);
    uint64_t wrong = 0;
    vdevice::remote::Server server(
        [&](CallId id, const void *const *arguments) -> int64_t {
            const uint64_t seed = seed_of(id, rounds[static_cast<size_t>(id)]++);
            const RandomCall expected(id, seed);
            wrong += is_same(describe_call(id, expected.arguments()), describe_call(id, arguments)) ? 0u : 1u;
            write_outputs(id, arguments, seed);
            return random_result(id, seed);
        },
        path);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (server.counters().calls < expected_calls() && std::chrono::steady_clock::now() < end) {
        pollfd ready{server.poll_fd(), POLLIN, 0};
        if (poll(&ready, 1, kPollMilliseconds) > 0) {
            server.serve_ready();
        }
    }
    std::printf("served %llu of %llu calls, %llu wrong\n", static_cast<unsigned long long>(server.counters().calls),
                static_cast<unsigned long long>(expected_calls()), static_cast<unsigned long long>(wrong));
    return wrong == 0 && server.counters().calls == expected_calls() ? EXIT_SUCCESS : EXIT_FAILURE;
}

bool call_once(vdevice::remote::Client &client, CallId id, uint64_t seed) {
    const RandomCall sent(id, seed);
    const RandomCall expected(id, seed);
    const int32_t wanted = random_result(id, seed);
    if (wanted >= 0) {
        write_outputs(id, expected.arguments(), seed);
    }
    const int32_t result = client.call(id, sent.arguments());
    return is_same(describe_result(id, expected.arguments(), wanted), describe_result(id, sent.arguments(), result));
}

int call(const std::string &path) {
    vdevice::remote::Client client("remote_peer", path);
    uint64_t wrong = 0;
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        const auto id = static_cast<CallId>(number);
        for (uint64_t round = 0; round < kRounds && vdevice::is_answered(id); ++round) {
            wrong += call_once(client, id, seed_of(id, round)) ? 0u : 1u;
        }
    }
    std::printf("made %llu calls, %llu wrong\n", static_cast<unsigned long long>(expected_calls()),
                static_cast<unsigned long long>(wrong));
    return wrong == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char **arguments) {
    constexpr int kArguments = 3;
    const std::string_view role = count == kArguments ? arguments[1] : "";
    try {
        if (role == "serve") {
            return serve(arguments[2]);
        }
        if (role == "call") {
            return call(arguments[2]);
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "remote_peer: %s.\n", error.what());
        return EXIT_FAILURE;
    }
    std::fprintf(stderr, "usage: remote_peer serve PATH | remote_peer call PATH\n");
    return EXIT_FAILURE;
}
