// Which of the tables of tags decides about a frame.
#include "vdevice/chip/tables/tag_rules.h"

namespace vdevice::chip {
namespace {

/** The control information of the customer's own tag, if the payload begins with a whole one and a type behind it. */
std::optional<uint16_t> customer_tci(Bytes payload) {
    if (payload.size() < kVlanTagBytes + kTypeBytes || read16(payload, 0) != kVlanTpid) {
        return std::nullopt;
    }
    return read16(payload, kTypeBytes);
}

/** The frame in the VLAN, and with the priority, that the entry gives it; without an entry as it was. */
Classified changed_by(ChosenBy table, const TagChange *entry, const Classified &before) {
    if (entry == nullptr) {
        return before;
    }
    return {entry->apply(before.tci), table, entry->has_priority() ? table : before.priority_by};
}

}  // namespace

std::optional<Header> read_header(const PortTags &tags, const Frame &frame) {
    return tags.mode == DoubleTag::kExternal ? read_untagged_header(frame) : read_header(frame, tags.tpid);
}

Classified TagRules::classify(int port, const Port &settings, const Header &header) const {
    if (header.tagged) {
        const uint16_t tci = settings.remap.apply(header.tci);
        // A tag with VID 0 gives the frame a priority but no VLAN (IEEE 802.1Q, priority-tagged frames).
        if (header.vid() == 0) {
            return {static_cast<uint16_t>(tci | settings.pvid), ChosenBy::kPort, ChosenBy::kTag};
        }
        return changed_by(ChosenBy::kTranslation, ingress.find(port, header.vid()),
                          {tci, ChosenBy::kTag, ChosenBy::kTag});
    }
    if (settings.tags.mode != DoubleTag::kOff) {
        if (const auto tci = customer_tci(header.payload)) {
            if (const TagChange *entry = double_tags.find(port, *tci & kVidMask)) {
                return changed_by(ChosenBy::kDoubleTag, entry, {*tci, ChosenBy::kTag, ChosenBy::kTag});
            }
        }
    }
    const auto own = static_cast<uint16_t>(settings.untagged_priority << kPcpShift | settings.pvid);
    return changed_by(ChosenBy::kSubnet, subnets.find(port, header.payload), {own});
}

uint16_t TagRules::on_egress(int port, uint16_t tci) const {
    const TagChange *entry = egress.find(port, tci & kVidMask);
    return entry == nullptr ? tci : entry->apply(tci);
}

}  // namespace vdevice::chip
