// Copies frames into the queues of those who want them. The octets become text when they are taken.
#include "vdevice/inspect/capturing.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "text/hex.h"
#include "vdevice/chip/account/names.h"
#include "vdevice/inspect/filter.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

/** About what a waiting frame takes. */
constexpr size_t size_of(size_t octets) {
    constexpr size_t kRecord = 64;
    return kRecord + octets;
}

constexpr Filter kPort{"port", kPortList, "frames of these ports: 3 or 1-4,7 or cpu", FilterKind::kOwn, {}};
constexpr Filter kDirection{
    "direction", "in|out|both", "as they come in, as they leave, or both", FilterKind::kOwn, {}};
constexpr Filter kDropped{"dropped", "", "frames that are dropped or lost, too", FilterKind::kOwn, {}};
constexpr Filter kCaptureOptions[] = {kPort, kDirection, kDropped};

Capturing::Wanted wanted_of(const Device &device, const json &request) {
    const std::string direction = request.value(kDirection.name, "both");
    if (direction != "in" && direction != "out" && direction != "both") {
        throw Refusal{"The option --direction takes in, out or both."};
    }
    Capturing::Wanted wanted{{}, direction != "out", direction != "in", request.value(kDropped.name, false)};
    for (const int port : wired_ports(device)) {
        wanted.ports.put(port, asks_for(request, kPort, user_number(device, port)));
    }
    if (wanted.ports.empty()) {
        throw Refusal{fmt::format("The device has the ports cpu and 1 to {}.", device.board().user_ports)};
    }
    return wanted;
}

/** Says why a request could not be opened. */
json refuse_capture(Device &device, const json &request) {
    wanted_of(device, request);
    throw Refusal{fmt::format("{} clients capture already.", Capturing::kMostCaptures)};
}

}  // namespace

extern constexpr Subject kCapture{"capture",      "[FILE]",     "the frames of ports, into a file for Wireshark",
                                  refuse_capture, show_nothing, kCaptureOptions};

Lines Capturing::open(const json &request, const std::function<void()> &wake) {
    tick();  // those who have left make room
    if (audience_.size() >= kMostCaptures) {
        return nullptr;
    }
    const Wanted wanted = wanted_of(device_, request);
    if (audience_.empty()) {
        device_.add_watcher(*this);
    }
    return [this, has_begun = false,
            capture = audience_.add({wanted, {kMostWaiting, wake}, {}})]() mutable -> std::optional<std::string> {
        if (!std::exchange(has_begun, true)) {
            return first_line();
        }
        const auto taken = capture->queue.take();
        if (!taken) {
            return std::nullopt;
        }
        const auto *captured = std::get_if<Captured>(&*taken);
        return captured == nullptr ? json{{"missed", std::get<Missed>(*taken).count}}.dump() : line_of(*captured);
    };
}

void Capturing::tick() {
    if (!audience_.empty()) {
        audience_.forget_absent();
        if (audience_.empty()) {
            device_.remove_watcher(*this);
        }
    }
}

/** The ports, and the wall clock at the device's time 0 in nanoseconds. */
std::string Capturing::first_line() const {
    const auto wall = std::chrono::system_clock::now().time_since_epoch();
    json ports = json::array();
    for (const int port : wired_ports(device_)) {
        const int number = user_number(device_, port);
        ports.push_back({{"port", number}, {"name", number == 0 ? "cpu" : "port" + std::to_string(number)}});
    }
    const chip::Time start = std::chrono::duration_cast<chip::Time>(wall) - device_.now();
    return json{{"capturing", true}, {"start", start.count()}, {"ports", ports}}.dump();
}

std::string Capturing::line_of(const Captured &captured) const {
    json object = {{"time", captured.time.count()},
                   {"port", user_number(device_, captured.port)},
                   {"direction", captured.is_in ? "in" : "out"},
                   {"frame", text::hex(captured.octets)}};
    if (captured.comment != nullptr) {
        object["comment"] = captured.comment;
    }
    return object.dump();
}

void Capturing::put(Capture &capture, Captured captured) {
    // The newest frames are kept: who reads only after something went wrong wants those just before it.
    const size_t size = size_of(captured.octets.size());
    capture.queue.make_room(size);
    capture.queue.put(std::move(captured), size);
}

void Capturing::tell(chip::Time time, int port, bool is_in, const char *comment, const chip::Frame &frame) {
    audience_.for_each([&](Capture &capture) {
        const Wanted &wanted = capture.wanted;
        if (!wanted.ports.has(port) || !(is_in ? wanted.in : wanted.out) || (comment != nullptr && !wanted.dropped)) {
            return;
        }
        Captured captured{time, port, is_in, comment, std::vector<uint8_t>(frame.size())};
        frame.copy_to(captured.octets.data());
        if (is_on_way_) {
            capture.copies.push_back(std::move(captured));
        } else {
            put(capture, std::move(captured));
        }
    });
}

// A frame comes before its copies, though whether it is dropped is known after they were made.
void Capturing::begun() {
    is_on_way_ = true;
    audience_.for_each([](Capture &capture) { capture.copies.clear(); });
}

void Capturing::passed(const chip::Passage &frame) {
    is_on_way_ = false;
    tell(frame.now, frame.ingress, true, frame.drop ? chip::name(*frame.drop) : nullptr, {frame.received, {}});
    audience_.for_each([](Capture &capture) {
        for (Captured &copy : capture.copies) {
            put(capture, std::move(copy));
        }
        capture.copies.clear();
    });
}

void Capturing::left(int port, const chip::Frame &copy, const chip::Dispatch & /*dispatch*/) {
    tell(device_.now(), port, false, nullptr, copy);
}

void Capturing::lost(int port, const chip::Frame &copy, const chip::Dispatch & /*dispatch*/, chip::Lost reason) {
    tell(device_.now(), port, false, chip::wording(reason).word, copy);
}

}  // namespace vdevice::inspect
