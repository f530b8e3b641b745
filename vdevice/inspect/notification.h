// What happens on the device, as it is told to those who watch, and the queue of one of them.
#pragma once

#include <stdint.h>
#include <array>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/time.h"
#include "vdevice/inspect/bounded_queue.h"

namespace vdevice::inspect {

enum class NotificationKind : uint8_t {
    kLinks,    /**< a port's link has come or gone */
    kLearning, /**< an address was learned or has moved; of very many in a second, how many more */
    kAgeing,   /**< addresses were removed because they were not seen: how many in a second */
    kDrops,    /**< frames were dropped: how many in a second, by port and reason */
    kFull,     /**< addresses were not learned for lack of room: how many in a second, by port */
    kMissed,   /**< the watcher was too slow: how many of these it did not get */
};

/** The names of the kinds that can be asked for, in their order. */
constexpr std::array<const char *, 5> kNotificationNames = {"links", "learning", "ageing", "drops", "full"};

/** A set of kinds, bit by bit. */
using NotificationKinds = uint32_t;

constexpr NotificationKinds bit_of(NotificationKind kind) {
    return 1U << static_cast<unsigned>(kind);
}

struct Notification {
    chip::Time time{};
    NotificationKind kind{};
    const char *what = ""; /**< "up", "learned", or the reason of a drop */
    int port = 0;          /**< a user port, or 0 */
    chip::Vid vid = 0;
    chip::Mac mac{};
    uint64_t count = 0;
};

nlohmann::json to_json(const Notification &notification);
std::string to_text(const Notification &notification);

/** What one watcher has not taken yet of what it asked for. */
class NotificationQueue {
  public:
    static constexpr size_t kMost = 1024;

    NotificationQueue(NotificationKinds kinds, std::function<void()> wake)
        : kinds_{kinds}, queue_{kMost, std::move(wake)} {}

    /** Drops what the watcher has not asked for. */
    void put(const Notification &notification);
    std::optional<Notification> take();

  private:
    NotificationKinds kinds_;
    BoundedQueue<Notification> queue_;
    chip::Time last_{};
};

}  // namespace vdevice::inspect
