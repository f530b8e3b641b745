// The new DSCP and the priority of frames on ports that trust the DSCP (RFC 2474): one map for the chip, and rows of
// single ports that replace its rows.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <optional>

#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/status.h"
#include "vdevice/chip/tables/port_priorities.h"

namespace vdevice::chip {

constexpr uint32_t kDscps = 64;

struct DscpRow {
    uint8_t mapped = 0;
    uint8_t priority = 0;

    friend bool operator==(const DscpRow &, const DscpRow &) = default;
};

class DscpMap {
  public:
    /** The DSCP is kept, and its first three bits are the priority, as with class selectors (RFC 2474). */
    static DscpRow power_on_row(uint32_t dscp) {
        constexpr unsigned kClassShift = 3;
        return {static_cast<uint8_t>(dscp), static_cast<uint8_t>(dscp >> kClassShift)};
    }
    /** Whether each number is in its range. */
    static Status check(uint32_t dscp, uint32_t mapped, uint32_t priority) {
        return dscp < kDscps && mapped < kDscps && priority < kPriorities ? Status::kOk : Status::kBadArgument;
    }

    DscpMap();

    /** The chip's own row. The DSCP must be one, here and below, and the port must exist. */
    DscpRow row(uint32_t dscp) const { return rows_[dscp]; }
    /** The row on a port. */
    DscpRow row(int port, uint32_t dscp) const { return own(port, dscp).value_or(rows_[dscp]); }
    bool has_own(int port, uint32_t dscp) const { return own(port, dscp).has_value(); }

    /** Sets the chip's row and removes those of ports. */
    void set(uint32_t dscp, DscpRow row);
    /** Gives the port a row that replaces the chip's. */
    void set(int port, uint32_t dscp, DscpRow row) { own_[static_cast<size_t>(port)][dscp] = row; }
    /** Sets the priority on all ports, and keeps the new DSCP. */
    void set_priority(uint32_t dscp, uint8_t priority);

  private:
    const std::optional<DscpRow> &own(int port, uint32_t dscp) const { return own_[static_cast<size_t>(port)][dscp]; }

    std::array<DscpRow, kDscps> rows_;
    std::array<std::array<std::optional<DscpRow>, kDscps>, kChipPorts> own_{};
};

}  // namespace vdevice::chip
