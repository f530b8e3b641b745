#include "vdevice/chip/tables/priority_rules.h"

#include "vdevice/chip/frame/remark.h"

namespace vdevice::chip {
namespace {

uint16_t with_priority(uint16_t tci, uint32_t priority) {
    return with_bits(tci, kPcpMask, priority << kPcpShift);
}

}  // namespace

Classified PriorityRules::classify(int port, const Port &settings, const Header &header, uint16_t tci) const {
    const Classified by_tag{tci, std::nullopt};
    const Classified by_port{with_priority(tci, settings.untagged_priority), std::nullopt};
    if (settings.trust == Trust::kDot1p) {
        return by_tag;
    }
    if (settings.trust == Trust::kPort) {
        return by_port;
    }
    const std::optional<uint8_t> dscp = dscp_of(header);
    if (!dscp) {
        return settings.trust == Trust::kDscp && defaults_to_port ? by_port : by_tag;
    }
    const DscpRow row = dscps.row(port, *dscp);
    Classified by_dscp{with_priority(tci, row.priority), std::nullopt};
    if (row.mapped != *dscp) {
        by_dscp.dscp = row.mapped;
    }
    return by_dscp;
}

}  // namespace vdevice::chip
