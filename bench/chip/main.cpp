// bench_chip CASE FRAMES: sends so many frames through the chip, without any interface, and sees that they come out.
// Without arguments it lists the cases. What is measured is what it costs, from outside, as the difference of two runs.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/chip/chip_case.h"

namespace bench {
namespace {

constexpr vdevice::chip::Time kBetweenFrames{1000};

void list_cases() {
    for (const ChipCase &each : chip_cases()) {
        std::puts(each.name);
    }
}

const ChipCase *find_case(const char *name) {
    for (const ChipCase &each : chip_cases()) {
        if (std::strcmp(each.name, name) == 0) {
            return &each;
        }
    }
    return nullptr;
}

/** Sends the case's frames in turn; what the chip learns of them it has learned after the first round. */
size_t send(Bench &bench, size_t frames) {
    size_t octets = 0;
    size_t next = 0;
    vdevice::chip::Time now{};
    for (size_t i = 0; i < frames; ++i) {
        const Octets &frame = bench.frames[next];
        next = next + 1 == bench.frames.size() ? 0 : next + 1;
        now += kBetweenFrames;
        octets += frame.size();
        bench.chip.receive(now, kIn, frame);
    }
    return octets;
}

bool run(const ChipCase &wanted, size_t frames) {
    static Bench bench;
    bench.chip.set_link(kIn, true);
    bench.chip.set_link(kOut, true);
    wanted.prepare(bench);
    const size_t frames_before = bench.sink.frames();
    const size_t octets_before = bench.sink.octets();
    const size_t octets = send(bench, frames);
    return bench.sink.frames() - frames_before == frames * wanted.copies &&
           bench.sink.octets() - octets_before == octets * wanted.copies;
}

}  // namespace
}  // namespace bench

int main(int argc, char **argv) {
    if (argc == 1) {
        bench::list_cases();
        return EXIT_SUCCESS;
    }
    const bench::ChipCase *wanted = argc == 3 ? bench::find_case(argv[1]) : nullptr;
    size_t frames = 0;
    if (wanted == nullptr || std::from_chars(argv[2], argv[2] + std::strlen(argv[2]), frames).ec != std::errc{}) {
        std::fputs("usage: bench_chip [CASE FRAMES]\n", stderr);
        return EXIT_FAILURE;
    }
    if (!bench::run(*wanted, frames)) {
        std::fprintf(stderr, "bench_chip: %s: not every frame came out as it should\n", wanted->name);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
