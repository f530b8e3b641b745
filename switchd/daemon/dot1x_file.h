// Which ports are under control and who is let in, in a file for the next daemon.
#pragma once

#include <stdint.h>
#include <map>
#include <set>
#include <string>

#include "switchd/kernel/kernel_state.h"

namespace switchd {

struct Dot1xRecord {
    bool by_hand = false; /**< the port is open for everybody */
    std::set<Mac> stations;

    bool operator==(const Dot1xRecord &) const = default;
};

/** Of all ports under control, by interface number. */
using Dot1xRecords = std::map<uint32_t, Dot1xRecord>;

/** Replaces the file; one that cannot be written is removed, so that the next daemon lets nobody in whom it should not.
 */
void write_records(const std::string &path, const Dot1xRecords &records);
/** Nothing if there is no such file, or another one. */
Dot1xRecords read_records(const std::string &path);

}  // namespace switchd
