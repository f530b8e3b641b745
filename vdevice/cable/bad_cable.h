// A cable that loses, duplicates, corrupts, slows down and delays frames, on the time handed in.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "vdevice/cable/conditions.h"
#include "vdevice/cable/fates.h"
#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/time.h"
#include "vdevice/chip/queues/line.h"

namespace vdevice::cable {

/** Every frame that has come, or was made by duplicating one, has passed, was lost in one of the ways, or waits. */
struct Counts {
    uint64_t frames = 0; /**< that have come */
    uint64_t passed = 0;
    uint64_t lost = 0;
    uint64_t duplicated = 0;
    uint64_t corrupted = 0;
    uint64_t no_room = 0; /**< dropped since too many wait */
    uint64_t cut = 0;     /**< that waited when the link went */
};

struct CountName {
    const char *name;
    uint64_t Counts::*count;
};

inline constexpr CountName kCountNames[] = {
    {"frames", &Counts::frames},
    {"passed", &Counts::passed},
    {"lost", &Counts::lost},
    {"duplicated", &Counts::duplicated},
    {"corrupted", &Counts::corrupted},
    {"no_room", &Counts::no_room},
    {"cut", &Counts::cut},
};

/** One direction. A frame never overtakes another. */
class OneWay {
  public:
    static constexpr size_t kMostFrames = 16384;
    static constexpr size_t kMostOctets = size_t{4} << 20;

    OneWay(const Conditions &conditions, int user_port, Direction direction);

    /** A frame comes, not before the one ahead of it. */
    void take(const chip::Frame &frame, chip::Time now);
    /** Hands the frames that are due to pass(octets, when it was due). */
    template <typename Pass>
    void deliver(chip::Time now, Pass pass) {
        while (!waiting_.empty() && waiting_.front().due <= now) {
            const Waiting frame = std::exchange(waiting_.front(), {});
            waiting_.pop_front();
            waiting_octets_ -= frame.octets.size();
            ++counts_.passed;
            pass(chip::Bytes{frame.octets}, frame.due);
        }
    }
    /** When the next frame is due, if any waits. */
    std::optional<chip::Time> next() const;
    /** Drops what waits. */
    void cut();

    const Counts &counts() const { return counts_; }
    size_t waiting() const { return waiting_.size(); }
    void clear_counts() { counts_ = {}; }

  private:
    struct Waiting {
        chip::Time due;
        std::vector<uint8_t> octets;
    };

    void send(const chip::Frame &frame, chip::Time now, uint64_t number, unsigned copy);
    void corrupt(std::vector<uint8_t> &octets, uint64_t number, unsigned copy);
    chip::Time due_of(size_t octets, chip::Time now, uint64_t number, unsigned copy);

    Conditions conditions_;
    Fates fates_;
    std::optional<chip::Line> line_;
    uint64_t next_number_ = 0;
    chip::Time last_due_{};
    std::deque<Waiting> waiting_;
    size_t waiting_octets_ = 0;
    Counts counts_;
};

struct BadCable {
    BadCable(const Conditions &the_conditions, int user_port)
        : conditions{the_conditions},
          in{conditions, user_port, Direction::kIn},
          out{conditions, user_port, Direction::kOut} {}

    /** When the next frame is due in either direction. */
    std::optional<chip::Time> next() const;

    Conditions conditions;
    OneWay in;
    OneWay out;
};

}  // namespace vdevice::cable
