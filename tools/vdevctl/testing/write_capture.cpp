// Writes the capture that its standard input describes, for tests in Python:
// {"interfaces": ["port7"], "frames": [{"interface": 0, "time": 1, "direction": 2, "octets": "ff00", "length": 2,
// "comment": ""}]}
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>

#include "tools/vdevctl/frame_input.h"
#include "tools/vdevctl/pcapng.h"

namespace {

using nlohmann::json;

void add(vdevctl::PcapngWriter &writer, const json &frame) {
    const vdevctl::Octets octets = vdevctl::read_frame(frame.at("octets"), stdin);
    const std::string comment = frame.at("comment");
    writer.add_frame({.interface = frame.at("interface"),
                      .time = std::chrono::nanoseconds{frame.at("time").get<int64_t>()},
                      .direction = static_cast<vdevctl::FrameDirection>(frame.at("direction").get<int>()),
                      .octets = octets,
                      .length = frame.at("length"),
                      .comment = comment});
}

}  // namespace

int main() {
    try {
        const json capture = json::parse(std::cin);
        vdevctl::PcapngWriter writer{STDOUT_FILENO, "the capture", "write_capture 1.0"};
        for (const std::string name : capture.at("interfaces")) {
            writer.add_interface(name);
        }
        for (const json &frame : capture.at("frames")) {
            add(writer, frame);
        }
        writer.flush();
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
}
