// Events as JSON and as text, and their queue.
#include "vdevice/inspect/notification.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

std::string name_of(NotificationKind kind) {
    return kind == NotificationKind::kMissed ? "missed" : kNotificationNames[static_cast<size_t>(kind)];
}

bool has_address(const Notification &notification) {
    return notification.kind == NotificationKind::kLearning && notification.vid != 0;
}

std::string words_of(const Notification &notification) {
    const std::string port = "port " + port_name(notification.port);
    switch (notification.kind) {
        case NotificationKind::kLinks:
            return port + " " + notification.what;
        case NotificationKind::kLearning:
            return has_address(notification) ? fmt::format("{} {} in VLAN {} on {}", notification.what,
                                                           driver::to_text(notification.mac), notification.vid, port)
                                             : fmt::format("{} more addresses", notification.count);
        case NotificationKind::kAgeing:
            return fmt::format("{} addresses", notification.count);
        case NotificationKind::kDrops:
            return fmt::format("{} {} frames {}", port, notification.count, notification.what);
        case NotificationKind::kFull:
            return fmt::format("{} {} addresses not learned", port, notification.count);
        default:
            return fmt::format("{} events", notification.count);
    }
}

}  // namespace

json to_json(const Notification &notification) {
    json object = {{"time", seconds(notification.time)}, {"kind", name_of(notification.kind)}};
    const bool has_port = notification.kind == NotificationKind::kLinks ||
                          notification.kind == NotificationKind::kDrops ||
                          notification.kind == NotificationKind::kFull || has_address(notification);
    if (has_port) {
        object["port"] = notification.port;
    }
    if (notification.what[0] != '\0') {
        object["what"] = notification.what;
    }
    if (has_address(notification)) {
        object["vid"] = notification.vid;
        object["mac"] = driver::to_text(notification.mac);
    } else if (notification.kind != NotificationKind::kLinks) {
        object["count"] = notification.count;
    }
    return object;
}

std::string to_text(const Notification &notification) {
    return fmt::format("{:>12.6f}  {:<8}  {}\n", seconds(notification.time), name_of(notification.kind),
                       words_of(notification));
}

void NotificationQueue::put(const Notification &notification) {
    if ((kinds_ & bit_of(notification.kind)) != 0) {
        last_ = notification.time;
        queue_.put(notification);
    }
}

std::optional<Notification> NotificationQueue::take() {
    const auto taken = queue_.take();
    if (!taken) {
        return std::nullopt;
    }
    if (const auto *missed = std::get_if<Missed>(&*taken)) {
        return Notification{last_, NotificationKind::kMissed, "", 0, 0, {}, missed->count};
    }
    return std::get<Notification>(*taken);
}

}  // namespace vdevice::inspect
