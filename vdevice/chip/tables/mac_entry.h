// One entry of the MAC table, and the keys by which entries are picked.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/time.h"

namespace vdevice::chip {

/** Where a station is. Ports of one trunk are one place. */
struct Place {
    static constexpr int kNoTrunk = -1;

    int port = 0;
    int trunk = kNoTrunk;

    bool is_trunk() const { return trunk != kNoTrunk; }
    friend bool operator==(const Place &a, const Place &b) {
        return a.trunk == b.trunk && (a.is_trunk() || a.port == b.port);
    }
};

struct MacEntry {
    static constexpr int kNoTrunk = Place::kNoTrunk;

    Mac mac;
    Vid vid = 0;
    int port = 0; /**< behind a trunk the member that it was last seen on */
    bool is_static = false;
    Time last_seen{};
    int trunk = kNoTrunk;           /**< the trunk that the address is behind */
    bool is_given_to_trunk = false; /**< software named the trunk itself, not one of its ports */
    bool drops_from = false;        /**< filtering: frames from the address are dropped */
    bool drops_to = false;          /**< filtering: frames to the address are dropped */
    uint32_t group = 0;             /**< the number of a group address's port set; 0 for a station */
    uint32_t index = 0;             /**< its place in the table: bucket * kBucketSlots + slot */

    Place place() const { return {port, trunk}; }
    bool is_behind(int other_port, int other_trunk) const { return place() == Place{other_port, other_trunk}; }
    bool is_filter() const { return drops_from || drops_to; }
    bool is_group() const { return group != 0; }
    /** Learned, or added by software as if it had been. */
    bool is_dynamic() const { return !is_static; }
};

/** Which of the stations' entries an operation is for. Entries of group addresses are never picked. */
struct MacFilter {
    enum class Kind : uint8_t { kDynamic, kStatic, kAll };

    Kind kind = Kind::kDynamic;
    std::optional<Mac> mac{};
    std::optional<Vid> vid{};
    std::optional<Place> place{};

    bool picks(const MacEntry &entry) const {
        const bool kind_fits = kind == Kind::kAll || entry.is_static == (kind == Kind::kStatic);
        return !entry.is_group() && kind_fits && (!mac || *mac == entry.mac) && (!vid || *vid == entry.vid) &&
               (!place || *place == entry.place());
    }
};

}  // namespace vdevice::chip
