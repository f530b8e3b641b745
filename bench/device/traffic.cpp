// bench_traffic: stations that introduce themselves, and a stream of frames that is faster than the device.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
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
    Station first = 0;
    Station other = 0;
    size_t stations = 1;
    size_t flows = 1;
    size_t size = kSmallestFrame;
    size_t train = 1;
    double seconds = 1;
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
    for (const Flow &flow : flows_to_stations(options.first, options.flows, options.stations)) {
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

int run(int argc, char **argv) {
    Options options;
    CLI::App app{"bench_traffic: sends frames, and prints how many the interface has taken."};
    app.require_subcommand(1);
    app.add_option("interface", options.interface_name, "where the frames go out")->required();
    app.add_option("--first", options.first, "number of the first station that sends");
    app.add_option("--stations", options.stations, "number of stations that send, or that are sent to");
    CLI::App *introduction = app.add_subcommand("introduce", "one frame from each station");
    introduction->add_option("--to", options.other, "number of the station that they send to");
    CLI::App *streaming = app.add_subcommand("stream", "frames to the stations 0, 1, ...");
    streaming->add_option("--flows", options.flows, "flows, with an UDP port each");
    streaming->add_option("--train", options.train, "frames of a flow at a time");
    streaming->add_option("--size", options.size, "bytes");
    streaming->add_option("--seconds", options.seconds, "duration");
    CLI11_PARSE(app, argc, argv);
    std::printf("%llu\n", static_cast<unsigned long long>(*introduction ? introduce(options) : stream(options)));
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
