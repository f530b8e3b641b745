// The table of refusals. docs/reference/results.md shows the same rows; a test compares the two.
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {
namespace {

constexpr StatusEntry kStatusTable[] = {
    {Status::kOk, "ok", "done"},
    {Status::kBadUnit, "bad_unit", "the unit or the word behind it is not 0"},
    {Status::kBadArgument, "bad_argument", "an argument has a value that the call gives no meaning"},
    {Status::kNoPort, "no_port", "the chip has no port of this number"},
    {Status::kWrongMedium, "wrong_medium", "the port's medium has no such thing"},
    {Status::kCpuPort, "cpu_port", "the CPU port has no such setting"},
    {Status::kVlanRange, "vlan_range", "not a VLAN id of 1 to 4094, or a range whose end is before its start"},
    {Status::kVlanExists, "vlan_exists", "the VLAN exists already"},
    {Status::kVlanMissing, "vlan_missing", "the VLAN does not exist"},
    {Status::kVlanIsDefault, "vlan_is_default", "the default VLAN cannot be destroyed"},
    {Status::kUntaggedNotMember, "untagged_not_member", "an untagged port is not among the member ports"},
    {Status::kMacTableFull, "mac_table_full", "the MAC table has no room"},
    {Status::kMacMissing, "mac_missing", "the MAC table has no such entry"},
    {Status::kMacNotUnicast, "mac_not_unicast", "the address is a group address"},
    {Status::kMacSyntax, "mac_syntax", "the text is not a MAC address"},
    {Status::kMacBucketFull, "mac_bucket_full", "the MAC table's bucket for the address has no room"},
    {Status::kMacNotGroup, "mac_not_group", "the address is not a group address"},
    {Status::kGroupMissing, "group_missing", "there is no such multicast group"},
    {Status::kGroupTableFull, "group_table_full", "there are as many multicast groups as the chip has room for"},
    {Status::kReservedIndex, "reserved_index", "the table of reserved addresses has entries 0 to 63 only"},
    {Status::kNotFrontPort, "not_front_port", "the interface is not a user port of the board"},
    {Status::kQueueFull, "queue_full", "the event queue is full"},
    {Status::kTrunkRange, "trunk_range", "not a trunk id of 0 to 7"},
    {Status::kTrunkExists, "trunk_exists", "the trunk exists already"},
    {Status::kTrunkMissing, "trunk_missing", "the trunk does not exist"},
    {Status::kTrunkFull, "trunk_full", "more ports than a trunk has room for"},
    {Status::kTrunkMember, "trunk_member", "a port that is listed twice, a member of another trunk, or the CPU's"},
    {Status::kFieldGroup, "field_group", "not a group of field rules, 1 to 9"},
    {Status::kFieldRange, "field_range", "not a field entry of 0 to 1535"},
    {Status::kFieldSlice, "field_slice", "the field entry lies outside its group's slice"},
    {Status::kFieldExists, "field_exists", "the field entry exists already"},
    {Status::kFieldMissing, "field_missing", "the field entry was never created, or was destroyed"},
    {Status::kFieldPair, "field_pair", "not the first half of a pair: an odd entry, or a group that has none"},
    {Status::kFieldAction, "field_action", "field rules have no action of this number"},
    {Status::kMeterRange, "meter_range", "not a meter of 0 to 63"},
    {Status::kMeterMissing, "meter_missing", "the field entry names no meter that is there"},
    {Status::kCounterRange, "counter_range", "not a field counter of 0 to 255"},
    {Status::kMirrorSession, "mirror_session", "not a mirror session of 0 to 3"},
    {Status::kMirrorDestination, "mirror_destination", "copies cannot go to the source port itself, nor to the CPU's"},
    {Status::kMirrorBusy, "mirror_busy", "the session copies to another port already"},
    {Status::kMirrorMissing, "mirror_missing", "the session does not mirror so"},
    {Status::kRegisterMissing, "register_missing", "the chip has no register at this address"},
    {Status::kRegisterReadOnly, "register_read_only", "the register cannot be written"},
    {Status::kStormType, "storm_type", "storm control has no such type, or the call no meaning for it"},
    {Status::kTagEntryExists, "tag_entry_exists", "the table of tags has this entry already"},
    {Status::kTagEntryMissing, "tag_entry_missing", "the table of tags has no such entry"},
    {Status::kTagTableFull, "tag_table_full", "the table of tags has no room"},
    {Status::kStgRange, "stg_range", "not a spanning-tree group of 0 to 15"},
    {Status::kStgExists, "stg_exists", "the spanning-tree group exists already"},
    {Status::kStgMissing, "stg_missing", "the spanning-tree group does not exist"},
    {Status::kStgIsDefault, "stg_is_default", "the default group stays, and VLANs leave it only for another one"},
    {Status::kStgNotMember, "stg_not_member", "the VLAN is not in this spanning-tree group"},
    {Status::kStgState, "stg_state", "not a spanning-tree state of 0 to 4"},
    {Status::kListUnknown, "list_unknown", "no list of this kind has this handle and this count"},
    {Status::kTooManyLists, "too_many_lists", "too many lists were not given back"},
    {Status::kNotSupported, "not_supported", "the virtual device does not carry out this call"},
    {Status::kQueueRange, "queue_range", "not an egress queue that is configured, or not a number of them of 1 to 8"},
};

constexpr StatusEntry kUnknown{Status::kNotSupported, "unknown", "not a status of the virtual device"};

}  // namespace

std::span<const StatusEntry> status_table() {
    return kStatusTable;
}

const StatusEntry &describe(Status status) {
    for (const StatusEntry &entry : status_table()) {
        if (entry.status == status) {
            return entry;
        }
    }
    return kUnknown;
}

}  // namespace vdevice::chip
