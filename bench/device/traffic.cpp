// bench_traffic: stations that introduce themselves, and a stream of frames that is faster than the device.
#include <argp.h>
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <span>
#include <string>
#include <thread>

#include "bench/device/flows.h"
#include "bench/device/packet_sender.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kBatch = 64;
// Introductions go slowly, so that none is lost while the device learns.
constexpr size_t kIntroductions = 16;
constexpr std::chrono::milliseconds kBreath{1};
constexpr double kLongestSeconds = 60;

struct Options {
    std::string interface_name;
    std::string command;
    Station first = 0;
    Station other = 0;
    size_t stations = 1;
    size_t flows = 1;
    size_t size = kSmallestFrame;
    size_t train = 1;
    double seconds = 1;
    bool to_all = false;
};

/** Every station sends one frame to the other side. */
uint64_t introduce(const Options &options) {
    PacketSender sender{options.interface_name, PacketSender::Kind::kFrames};
    std::vector<Frame> frames;
    for (Station i = 0; i < options.stations; ++i) {
        frames.push_back(frame_of({options.first + i, options.other, 1}, kSmallestFrame));
    }
    uint64_t sent = 0;
    const std::span all{frames};
    for (size_t at = 0; at < all.size(); at += kIntroductions) {
        sent += sender.send(all.subspan(at, std::min(kIntroductions, all.size() - at)));
        std::this_thread::sleep_for(kBreath);
    }
    return sent;
}

/** What is sent for a flow when it is its turn. */
Frame turn_of(const Flow &flow, const Options &options) {
    return options.train > 1 ? train_of(flow, options.size, options.train) : frame_of(flow, options.size);
}

/** One station sends to the others, without a pause, for as long as was asked. */
uint64_t stream(const Options &options) {
    using Kind = PacketSender::Kind;
    PacketSender sender{options.interface_name, options.train > 1 ? Kind::kTrains : Kind::kFrames};
    std::vector<Frame> turns;
    for (const Flow &flow : flows_to_stations(options.first, options.flows, options.stations, options.to_all)) {
        turns.push_back(turn_of(flow, options));
    }
    while (turns.size() % kBatch != 0) {
        turns.push_back(turns[turns.size() - options.flows]);
    }
    uint64_t sent = 0;
    size_t at = 0;
    const std::chrono::duration<double> duration{std::min(options.seconds, kLongestSeconds)};
    for (const auto began = Clock::now(); Clock::now() - began < duration; at = (at + kBatch) % turns.size()) {
        sent += sender.send(std::span{turns}.subspan(at, kBatch)) * options.train;
    }
    return sent;
}

enum Key : int { kFirst = 1, kStations, kTo, kFlows, kTrain, kSize, kSeconds, kToAll };

const argp_option kOptions[] = {{"first", kFirst, "N", 0, "number of the first station that sends", 0},
                                {"stations", kStations, "N", 0, "number of stations that send, or that are sent to", 0},
                                {"to", kTo, "N", 0, "introduce: number of the station that they send to", 0},
                                {"flows", kFlows, "N", 0, "stream: flows, with an UDP port each", 0},
                                {"train", kTrain, "N", 0, "stream: frames of a flow at a time", 0},
                                {"size", kSize, "BYTES", 0, "stream: bytes of a frame", 0},
                                {"seconds", kSeconds, "S", 0, "stream: duration", 0},
                                {"to-all", kToAll, nullptr, 0, "stream: to the broadcast address", 0},
                                {}};

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    const auto read = [&](auto &number) {
        const char *end = argument + std::strlen(argument);
        if (const auto [last, error] = std::from_chars(argument, end, number); error != std::errc{} || last != end) {
            argp_error(state, "'%s' is not a number", argument);
        }
        return 0;
    };
    switch (key) {
        case kFirst:
            return read(options.first);
        case kStations:
            return read(options.stations);
        case kTo:
            return read(options.other);
        case kFlows:
            return read(options.flows);
        case kTrain:
            return read(options.train);
        case kSize:
            return read(options.size);
        case kSeconds:
            return read(options.seconds);
        case kToAll:
            options.to_all = true;
            return 0;
        case ARGP_KEY_ARG:
            (state->arg_num == 0 ? options.interface_name : options.command) = argument;
            return state->arg_num < 2 ? 0 : ARGP_ERR_UNKNOWN;
        case ARGP_KEY_END:
            if (options.command != "introduce" && options.command != "stream") {
                argp_error(state, "the command is introduce or stream");
            }
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
}

int run(int argc, char **argv) {
    const argp parser = {kOptions,
                         take_option,
                         "INTERFACE introduce|stream",
                         "bench_traffic: sends frames, and prints how many the interface has taken.",
                         nullptr,
                         nullptr,
                         nullptr};
    Options options;
    if (argp_parse(&parser, argc, argv, 0, nullptr, &options) != 0) {
        return 1;
    }
    const uint64_t sent = options.command == "introduce" ? introduce(options) : stream(options);
    std::printf("%llu\n", static_cast<unsigned long long>(sent));
    return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char **argv) {
    try {
        return bench::run(argc, argv);
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "bench_traffic: %s\n", problem.what());
        return 1;
    }
}
