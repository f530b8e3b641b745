// Events as JSON and as text, and their queue.
#include "vdevice/inspect/happening.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

std::string name_of(HappeningKind kind) {
    return kind == HappeningKind::kMissed ? "missed" : kHappeningNames[static_cast<size_t>(kind)];
}

bool has_address(const Happening &happening) {
    return happening.kind == HappeningKind::kLearning && happening.vid != 0;
}

std::string words_of(const Happening &happening) {
    const std::string port = "port " + port_name(happening.port);
    switch (happening.kind) {
        case HappeningKind::kLinks:
            return port + " " + happening.what;
        case HappeningKind::kLearning:
            return has_address(happening) ? fmt::format("{} {} in VLAN {} on {}", happening.what,
                                                        driver::to_text(happening.mac), happening.vid, port)
                                          : fmt::format("{} more addresses", happening.count);
        case HappeningKind::kAgeing:
            return fmt::format("{} addresses", happening.count);
        case HappeningKind::kDrops:
            return fmt::format("{} {} frames {}", port, happening.count, happening.what);
        case HappeningKind::kFull:
            return fmt::format("{} {} addresses not learned", port, happening.count);
        default:
            return fmt::format("{} events", happening.count);
    }
}

}  // namespace

json to_json(const Happening &happening) {
    json object = {{"time", seconds(happening.time)}, {"kind", name_of(happening.kind)}};
    const bool has_port = happening.kind == HappeningKind::kLinks || happening.kind == HappeningKind::kDrops ||
                          happening.kind == HappeningKind::kFull || has_address(happening);
    if (has_port) {
        object["port"] = happening.port;
    }
    if (happening.what[0] != '\0') {
        object["what"] = happening.what;
    }
    if (has_address(happening)) {
        object["vid"] = happening.vid;
        object["mac"] = driver::to_text(happening.mac);
    } else if (happening.kind != HappeningKind::kLinks) {
        object["count"] = happening.count;
    }
    return object;
}

std::string to_text(const Happening &happening) {
    return fmt::format("{:>12.6f}  {:<8}  {}\n", seconds(happening.time), name_of(happening.kind), words_of(happening));
}

void HappeningQueue::put(const Happening &happening) {
    if ((kinds_ & bit_of(happening.kind)) == 0) {
        return;
    }
    last_ = happening.time;
    if (waiting_.size() >= kMost) {
        ++missed_;
        return;
    }
    const bool was_empty = waiting_.empty() && missed_ == 0;
    if (missed_ != 0) {
        waiting_.push_back({happening.time, HappeningKind::kMissed, "", 0, 0, {}, std::exchange(missed_, 0)});
    }
    waiting_.push_back(happening);
    if (was_empty) {
        wake_();
    }
}

std::optional<Happening> HappeningQueue::take() {
    if (waiting_.empty()) {
        const uint64_t missed = std::exchange(missed_, 0);
        return missed == 0 ? std::nullopt
                           : std::optional<Happening>{{last_, HappeningKind::kMissed, "", 0, 0, {}, missed}};
    }
    const Happening first = waiting_.front();
    waiting_.pop_front();
    return first;
}

}  // namespace vdevice::inspect
