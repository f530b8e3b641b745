// Changes of the field processor.
#include "vdevice/state/testing/changes.h"

namespace vdevice::state::test {
namespace {

const QualifierBytes kData{1, 2, 3, 4, 5, 6};
const QualifierBytes kMask{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
constexpr adp_port_set_t kPorts{{0x40000000}};
const Param kDscp = param(46);
const Param kNoParam = param(0);

constexpr Change kChanges[] = {
    VDEVICE_CHANGE(user_field_init, 0, 0),
    VDEVICE_CHANGE(user_field_entry_create_id, 0, 0, 9, 100),
    VDEVICE_CHANGE(user_field_entry_prio_set, 0, 0, kEntry, 9),
    VDEVICE_CHANGE(user_field_set_double_entry, 0, 0, kWide),
    VDEVICE_CHANGE(user_field_entry_install, 0, 0, kEntry),
    VDEVICE_CHANGE(user_field_entry_install, 0, 0, kWide),
    VDEVICE_CHANGE(user_field_entry_destroy, 0, 0, kEntry),
    VDEVICE_CHANGE(user_field_action_add, 0, 0, kEntry, 1, kDscp.data(), kNoParam.data()),
    VDEVICE_CHANGE(user_field_action_remove_all, 0, 0, kEntry),
    VDEVICE_CHANGE(user_field_qualify_clear, 0, 0, kEntry),
    VDEVICE_CHANGE(user_field_qualify_SrcIp6, 0, 0, kEntry, kData.data(), kMask.data()),
    VDEVICE_CHANGE(user_field_qualify_DstIp6, 0, 0, kEntry, kData.data(), kMask.data()),
    VDEVICE_CHANGE(user_field_qualify_SrcMac, 0, 0, kEntry, kData.data(), kMask.data()),
    VDEVICE_CHANGE(user_field_qualify_DstMac, 0, 0, kEntry, kData.data(), kMask.data()),
    VDEVICE_CHANGE(user_field_qualify_SrcIp, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_DstIp, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_InPorts, 0, 0, kEntry, kPorts, kPorts),
    VDEVICE_CHANGE(user_field_qualify_OuterVlanId, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_OuterVlanId, 0, 0, kEntry, kVid, 0xFFE),
    VDEVICE_CHANGE(user_field_qualify_OuterVlanPri, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_InnerVlan, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_InnerVlanId, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_InnerVlanPri, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_L4SrcPort, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_L4DstPort, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_EtherType, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_IpProtocol, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_DSCP, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_Ip6TrafficClass, 0, 0, kEntry, 1, 1),
    VDEVICE_CHANGE(user_field_qualify_iptype, 0, 0, kEntry, 2),
    VDEVICE_CHANGE(user_field_qualify_FrameType, 0, 0, kEntry, 0),
    VDEVICE_CHANGE(user_field_meter_entry_set, 0, 5000, kMeter),
    VDEVICE_CHANGE(user_field_meter_entry_set, 0, 5000, 5),
    VDEVICE_CHANGE(user_field_meter_destroy, 0, 0, kEntry),
    VDEVICE_CHANGE(user_field_meter_ifg_exclude_init),
    VDEVICE_CHANGE(user_field_clear_statistics, 0, 0, kFieldCounter, 0),
    VDEVICE_CHANGE(user_field_lookupMissAct_set, 0, 0, kPort, 1),
};

}  // namespace

std::vector<Change> rule_changes() {
    return {std::begin(kChanges), std::end(kChanges)};
}

}  // namespace vdevice::state::test
