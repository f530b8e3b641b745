// Changes of the chip's rows also change the rows of ports.
#include "vdevice/chip/tables/dscp_map.h"

namespace vdevice::chip {

DscpMap::DscpMap() {
    for (uint32_t dscp = 0; dscp < kDscps; ++dscp) {
        rows_[dscp] = power_on_row(dscp);
    }
}

void DscpMap::set(uint32_t dscp, DscpRow row) {
    rows_[dscp] = row;
    for (auto &port : own_) {
        port[dscp].reset();
    }
}

void DscpMap::set_priority(uint32_t dscp, uint8_t priority) {
    rows_[dscp].priority = priority;
    for (auto &port : own_) {
        if (std::optional<DscpRow> &row = port[dscp]) {
            row->priority = priority;
        }
    }
}

}  // namespace vdevice::chip
