// The chip's MAC table: which port an address of a VLAN is behind. It is finite, learns and moves dynamic entries,
// ages them on the time handed in, and never touches static ones by itself.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "vdevice/chip/frame.h"
#include "vdevice/chip/status.h"

namespace vdevice::chip {

/** Time since the device was switched on, always handed in: the chip has no clock of its own. */
using Time = std::chrono::nanoseconds;

struct MacEntry {
    static constexpr int kNoTrunk = -1;

    Mac mac;
    Vid vid = 0;
    int port = 0; /**< of a trunk's address the member that it was last seen on */
    bool is_static = false;
    Time last_seen{};
    int trunk = kNoTrunk; /**< the trunk that the address is behind */

    /** Ports of one trunk are one place. */
    bool is_behind(int other_port, int other_trunk) const {
        return trunk == other_trunk && (trunk != kNoTrunk || port == other_port);
    }
};

class MacTable {
  public:
    static constexpr std::size_t kCapacity = 8192;
    static constexpr std::chrono::seconds kDefaultAgeTime{300};

    struct Counters {
        std::uint64_t learned = 0;
        std::uint64_t moved = 0;
        std::uint64_t aged = 0;
        std::uint64_t refused = 0; /**< addresses that could not be learned because the table was full */
    };

    /** Learns the source of a frame, moves it, or refreshes it. A static entry stays where it is. */
    void learn(Mac mac, Vid vid, int port, Time now, int trunk = MacEntry::kNoTrunk);
    const MacEntry *find(Mac mac, Vid vid) const;

    /** Adds a static entry in the place of whatever entry the address had. */
    Status add_static(Mac mac, Vid vid, int port, int trunk = MacEntry::kNoTrunk);
    Status remove(Mac mac, Vid vid);
    /** Removes the entries that the predicate picks and says how many there were. */
    std::size_t remove_if(const std::function<bool(const MacEntry &)> &picks);

    void for_each(const std::function<void(MacEntry &)> &visit);

    /** Removes dynamic entries that have not been seen for the age time. */
    void age(Time now);
    /** 0 turns ageing off. */
    void set_age_time(std::chrono::seconds age_time) { age_time_ = age_time; }
    std::chrono::seconds age_time() const { return age_time_; }

    std::size_t size() const { return entries_.size(); }
    const Counters &counters() const { return counters_; }
    /** All entries, ordered by VLAN and address. */
    std::vector<MacEntry> list() const;

  private:
    static std::uint64_t key(Mac mac, Vid vid) { return (std::uint64_t{vid} << 48) | mac.value(); }

    std::unordered_map<std::uint64_t, MacEntry> entries_;
    std::chrono::seconds age_time_ = kDefaultAgeTime;
    Counters counters_;
};

}  // namespace vdevice::chip
