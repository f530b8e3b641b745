// Sums up what comes frame by frame, and tells it once a second.
#include "vdevice/inspect/watching.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "text/suggest.h"
#include "vdevice/chip/account/names.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

NotificationKinds kind_named(const std::string &word) {
    for (size_t i = 0; i < kNotificationNames.size(); ++i) {
        if (word == kNotificationNames[i]) {
            return 1U << i;
        }
    }
    const std::string question = text::did_you_mean(word, {kNotificationNames.begin(), kNotificationNames.end()}, ", ");
    throw Refusal{"there is nothing to watch named '" + word + "'" +
                  (question.empty()
                       ? "; the kinds are " + joined({kNotificationNames.begin(), kNotificationNames.end()}, ", ") + "."
                       : question)};
}

/** The kinds of a request, all of them if it names none. */
NotificationKinds kinds_of(const json &request) {
    NotificationKinds kinds = 0;
    for (const json &word : request.value("kind", json::array())) {
        kinds |= kind_named(word.get<std::string>());
    }
    const NotificationKinds all = (1U << kNotificationNames.size()) - 1;
    return (kinds == 0 ? all : kinds) | bit_of(NotificationKind::kMissed);
}

/** Says what is wrong with a request that could not be opened. */
json refuse_watch(Device & /*device*/, const json &request) {
    kinds_of(request);
    throw Refusal{"The device cannot be watched here."};
}

}  // namespace

extern constexpr Subject kWatch{"watch", "[KIND...]",
                                "what happens, line by line: links, learning, ageing, drops, full", refuse_watch,
                                show_nothing};

Watching::Watching(Device &device) : device_{device} {
    device_.add_link_listener([this](int port) { tell_link(port); });
}

std::shared_ptr<NotificationQueue> Watching::begin(NotificationKinds kinds, std::function<void()> wake) {
    if (audience_.empty()) {
        sums_ = {};
        addresses_ = 0;
        aged_ = device_.chip().macs().counters().aged;
        device_.add_watcher(*this);
    }
    return audience_.add({kinds, std::move(wake)});
}

void Watching::tick() {
    if (audience_.empty()) {
        return;
    }
    tell_sums();
    audience_.forget_absent();
    if (audience_.empty()) {
        device_.remove_watcher(*this);
    }
}

Lines Watching::open(const json &request, const std::function<void()> &wake) {
    const bool as_text = request.value("form", json("json")) == "text";
    const auto line_of = [as_text](const Notification &notification) {
        return (as_text ? json{{"text", to_text(notification)}} : to_json(notification)).dump();
    };
    return
        [line_of, queue = begin(kinds_of(request), wake), has_begun = false]() mutable -> std::optional<std::string> {
            if (!std::exchange(has_begun, true)) {
                return json{{"watching", true}}.dump();
            }
            const auto notification = queue->take();
            return notification ? std::optional{line_of(*notification)} : std::nullopt;
        };
}

void Watching::passed(const chip::Passage &frame) {
    Sums &sums = sums_[static_cast<size_t>(frame.ingress)];
    if (frame.drop) {
        ++sums.drops[static_cast<size_t>(*frame.drop)];
    }
    if (frame.learned == chip::Learned::kNoRoom) {
        ++sums.no_room;
    } else if (frame.learned == chip::Learned::kNew || frame.learned == chip::Learned::kMoved) {
        tell_address(frame);
    }
}

void Watching::lost(int port, const chip::Frame & /*copy*/, const chip::Dispatch & /*dispatch*/, chip::Lost reason) {
    ++sums_[static_cast<size_t>(port)].lost[static_cast<size_t>(reason)];
}

void Watching::tell(const Notification &notification) {
    audience_.for_each([&](NotificationQueue &queue) { queue.put(notification); });
}

void Watching::tell_address(const chip::Passage &frame) {
    if (++addresses_ <= kMaxAddresses) {
        tell({device_.now(), NotificationKind::kLearning, frame.learned == chip::Learned::kNew ? "learned" : "moved",
              user_number(device_, frame.ingress), frame.vid(), frame.header.source, 0});
    }
}

void Watching::tell_link(int port) {
    tell({device_.now(),
          NotificationKind::kLinks,
          device_.chip().port(port).is_up() ? "up" : "down",
          user_number(device_, port),
          0,
          {},
          0});
}

void Watching::tell_count(NotificationKind kind, int port, const char *what, uint64_t count) {
    if (count != 0) {
        tell({device_.now(), kind, what, port, 0, {}, count});
    }
}

void Watching::tell_sums() {
    const uint64_t aged = device_.chip().macs().counters().aged;
    tell_count(NotificationKind::kAgeing, 0, "", aged - std::min(aged, aged_));
    aged_ = aged;
    tell_count(NotificationKind::kLearning, 0, "", addresses_ - std::min(addresses_, kMaxAddresses));
    addresses_ = 0;
    for (const int port : wired_ports(device_)) {
        tell_sums_of(user_number(device_, port), sums_[static_cast<size_t>(port)]);
    }
    sums_ = {};
}

void Watching::tell_sums_of(int port, const Sums &sums) {
    for (size_t reason = 0; reason < sums.drops.size(); ++reason) {
        tell_count(NotificationKind::kDrops, port, chip::name(static_cast<chip::Drop>(reason)), sums.drops[reason]);
    }
    for (size_t reason = 0; reason < sums.lost.size(); ++reason) {
        tell_count(NotificationKind::kDrops, port, chip::wording(static_cast<chip::Lost>(reason)).word,
                   sums.lost[reason]);
    }
    tell_count(NotificationKind::kFull, port, "", sums.no_room);
}

}  // namespace vdevice::inspect
