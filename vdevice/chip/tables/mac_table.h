// The chip's MAC table: the place that an address of a VLAN is behind. It is a hash of buckets, finite, with room for
// a few addresses of the same hash. It learns, moves and ages dynamic entries, on the time handed in; static ones
// change only by request. Entries of group addresses name a set of ports.
#pragma once

#include <stdint.h>
#include <array>
#include <chrono>
#include <functional>
#include <vector>

#include "vdevice/chip/frame/port_set_pool.h"
#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/tables/learn_counts.h"
#include "vdevice/chip/tables/mac_entry.h"

namespace vdevice::chip {

/** What became of a frame's source address. */
enum class Learned : uint8_t {
    kNot,       /**< its port does not learn, or the frame's way ended before */
    kKnown,     /**< it was known at this place; its time is updated */
    kNew,       /**< it has a new entry */
    kMoved,     /**< its entry has moved here from another place */
    kStatic,    /**< it has a static entry, which stays as it is */
    kNoRoom,    /**< its bucket of the table is full */
    kOverLimit, /**< a limit does not let it be learned, and the frame is dropped */
};

class MacTable {
  public:
    static constexpr size_t kBuckets = 1024;
    static constexpr size_t kBucketSlots = 8;
    static constexpr size_t kCapacity = kBuckets * kBucketSlots;
    static constexpr std::chrono::seconds kDefaultAgeTime{300};
    static constexpr std::chrono::seconds kMaxAgeTime{1000000};  // the longest of IEEE 802.1D

    struct Counters {
        uint64_t learned = 0;
        uint64_t moved = 0;
        uint64_t aged = 0;
        uint64_t refused = 0; /**< addresses that were not learned because their bucket was full */
    };

    MacTable();

    /**
     * The sum of the address's three 16-bit words and the VLAN, modulo the number of buckets: as many addresses in a
     * row as the table has entries fill every bucket, as long as their last 16 bits do not overflow on the way.
     */
    static constexpr size_t bucket_of(Mac mac, Vid vid) {
        constexpr unsigned kWordBits = 16;
        const uint64_t words = mac.value() + (mac.value() >> kWordBits) + (mac.value() >> (2 * kWordBits));
        return static_cast<size_t>((words + vid) % kBuckets);
    }

    /** Learns the source of a frame, moves it, or refreshes it. A static entry stays where it is. */
    Learned learn(Mac mac, Vid vid, int port, Time now, int trunk = MacEntry::kNoTrunk);
    /** Updates the time of an entry that learn() would not change otherwise, as for most frames; else false. */
    bool refresh(const MacEntry &known, const Place &place, Time now);
    const MacEntry *find(Mac mac, Vid vid) const;
    /** The first entry from an index on, or null. */
    const MacEntry *next(uint64_t index) const;

    /** Adds a station's entry and replaces the one that the address had. */
    Status add(const MacEntry &entry);
    Status add_static(Mac mac, Vid vid, int port, int trunk = MacEntry::kNoTrunk);
    Status remove(Mac mac, Vid vid);
    /** Removes the entries that the predicate picks and says how many there were. */
    size_t remove_if(const std::function<bool(const MacEntry &)> &picks);
    size_t remove_all(const MacFilter &filter);

    /** The visitor may change the place of an entry, but not its address and VLAN. */
    void for_each(const std::function<void(MacEntry &)> &visit);

    /** Gives a group address a set of ports, which replaces the one that it had. */
    Status add_group(Mac mac, Vid vid, const PortSet &ports);
    Status remove_group(Mac mac, Vid vid);
    void remove_all_groups();
    /** @p entry is a group's. */
    const PortSet &ports_of(const MacEntry &entry) const { return groups_.get(entry.group); }
    size_t group_count() const { return groups_.size(); }

    /** Removes dynamic entries that have not been seen for the age time. */
    void age(Time now);
    /** 0 turns ageing off. */
    void set_age_time(std::chrono::seconds age_time) { age_time_ = age_time; }
    std::chrono::seconds age_time() const { return age_time_; }

    size_t size() const { return size_; }
    const Counters &counters() const { return counters_; }
    void clear_counters() { counters_ = {}; }
    /** How many dynamic entries there are. */
    const LearnCounts &counts() const { return counts_; }
    /** All entries, ordered by VLAN and address. */
    std::vector<MacEntry> list() const;

  private:
    static constexpr uint64_t kFree = 0;  // VLAN 0 has no entries

    static constexpr uint64_t key(Mac mac, Vid vid) { return (uint64_t{vid} << 48) | mac.value(); }
    size_t find_key(size_t bucket, uint64_t wanted) const;
    Status put(const MacEntry &entry);
    void erase(const MacEntry &entry);
    template <typename Visit>
    void visit_all(Visit visit);

    std::vector<uint64_t> keys_;  // not in the entries, so that a look-up reads one cache line
    std::vector<MacEntry> entries_;
    size_t size_ = 0;
    PortSetPool groups_;
    std::chrono::seconds age_time_ = kDefaultAgeTime;
    Counters counters_;
    LearnCounts counts_;
};

}  // namespace vdevice::chip
