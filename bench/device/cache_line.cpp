// bench_cache_line CORE CORE: prints the nanoseconds that a cache line takes from one processor to the other.
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

// Of many short rounds the median counts: others may run on the processors in between.
constexpr size_t kRounds = 50;
constexpr uint32_t kTransfers = 2000;  // of a round
constexpr size_t kLineBytes = 64;

struct alignas(kLineBytes) Ball {
    std::atomic<uint32_t> hits{0};
};

bool stay_on(size_t core) {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    return pthread_setaffinity_np(pthread_self(), sizeof(cores), &cores) == 0;
}

/** Hits the ball each time the other player has, up to so many hits of both. */
void play(Ball &ball, uint32_t first, uint32_t last) {
    for (uint32_t hit = first; hit < last; hit += 2) {
        while (ball.hits.load(std::memory_order_acquire) != hit) {
        }
        ball.hits.store(hit + 1, std::memory_order_release);
    }
}

/** Negative if the cores are not there. */
double nanoseconds_a_transfer(size_t near, size_t far) {
    Ball ball;
    std::atomic<bool> is_there{true};
    std::thread other{[&] {
        is_there = stay_on(far);
        play(ball, 1, kRounds * kTransfers);
    }};
    const bool is_here = stay_on(near);
    std::array<double, kRounds> rounds;
    uint32_t first = 0;
    for (double &round : rounds) {
        const auto began = Clock::now();
        play(ball, first, first + kTransfers);
        const std::chrono::duration<double, std::nano> spent = Clock::now() - began;
        round = spent.count() / kTransfers;
        first += kTransfers;
    }
    other.join();
    std::nth_element(rounds.begin(), rounds.begin() + kRounds / 2, rounds.end());
    return is_here && is_there ? rounds[kRounds / 2] : -1;
}

bool read_number(const char *text, size_t &number) {
    return std::from_chars(text, text + std::strlen(text), number).ec == std::errc{};
}

}  // namespace

int main(int argc, char **argv) {
    size_t near = 0;
    size_t far = 0;
    if (argc != 3 || !read_number(argv[1], near) || !read_number(argv[2], far) || near == far) {
        std::fputs("usage: bench_cache_line CORE CORE, two different ones\n", stderr);
        return 1;
    }
    const double spent = nanoseconds_a_transfer(near, far);
    if (spent < 0) {
        std::fputs("bench_cache_line: no such processors\n", stderr);
        return 1;
    }
    std::printf("%.1f\n", spent);
    return 0;
}
