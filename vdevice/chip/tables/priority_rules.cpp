// The priority on ports that do not trust the tag alone.
#include "vdevice/chip/tables/priority_rules.h"

#include "vdevice/chip/frame/remark.h"

namespace vdevice::chip {
namespace {

/** The frame in its VLAN, with another priority. */
Classified with_priority(const Classified &frame, uint32_t priority, ChosenBy chosen_by) {
    return {with_bits(frame.tci, kPcpMask, priority << kPcpShift), frame.vlan_by, chosen_by};
}

}  // namespace

Classified PriorityRules::by_trust(int port, const Port &settings, const Header &header,
                                   const Classified &by_tag) const {
    const Classified by_port = with_priority(by_tag, settings.untagged_priority, ChosenBy::kPort);
    if (settings.trust == Trust::kPort) {
        return by_port;
    }
    const std::optional<uint8_t> dscp = dscp_of(header);
    if (!dscp) {
        return settings.trust == Trust::kDscp && defaults_to_port ? by_port : by_tag;
    }
    const DscpRow row = dscps.row(port, *dscp);
    Classified by_dscp = with_priority(by_tag, row.priority, ChosenBy::kDscp);
    if (row.mapped != *dscp) {
        by_dscp.dscp = row.mapped;
    }
    return by_dscp;
}

}  // namespace vdevice::chip
