// What a process writes down so that its successor takes the groups over while they are in use.
#pragma once

#include <stdint.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "switchd/lacp/pdu.h"

namespace switchd {

struct SavedMember {
    uint32_t group = 0;
    lacp::Info partner; /**< with which it distributes */

    bool operator==(const SavedMember &) const = default;
};

struct SavedGroups {
    std::set<uint32_t> groups;               /**< that have a trunk in the chip */
    std::map<uint32_t, SavedMember> members; /**< user ports that LACP has brought into use */

    bool operator==(const SavedGroups &) const = default;
};

/** Lines of words, for a file. */
std::string text_of(const SavedGroups &saved);
/** Nothing if any of it is wrong. */
std::optional<SavedGroups> saved_of(std::string_view text);

}  // namespace switchd
