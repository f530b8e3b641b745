// The chip's answer to a request. Each refusal has a number and a name of its own, so that a caller's log tells
// which rule was broken. The table of adp/status.h is generated from the enumeration: kVlanExists is vlan_exists, and
// the remark is its meaning. docs/reference/results.md shows the same rows; a test compares the two.
#pragma once

#include <stdint.h>

namespace vdevice::chip {

// -1 is not used here: a driver call that never reached the chip gives -1.
enum class Status : int32_t {
    kOk = 0,                   ///< done
    kBadUnit = -2,             ///< the unit or the word behind it is not 0
    kBadArgument = -3,         ///< an argument has a value that the call gives no meaning
    kNoPort = -4,              ///< the chip has no port of this number
    kWrongMedium = -5,         ///< the port's medium has no such thing
    kCpuPort = -6,             ///< the CPU port has no such setting
    kVlanRange = -10,          ///< not a VLAN id of 1 to 4094, or a range whose end is before its start
    kVlanExists = -11,         ///< the VLAN exists already
    kVlanMissing = -12,        ///< the VLAN does not exist
    kVlanIsDefault = -13,      ///< the default VLAN cannot be destroyed
    kUntaggedNotMember = -14,  ///< an untagged port is not among the member ports
    kMacTableFull = -20,       ///< the MAC table has no room
    kMacMissing = -21,         ///< the MAC table has no such entry
    kMacNotUnicast = -22,      ///< the address is a group address
    kMacSyntax = -23,          ///< the text is not a MAC address
    kMacBucketFull = -24,      ///< the MAC table's bucket for the address has no room
    kReservedIndex = -25,      ///< the table of reserved addresses has entries 0 to 63 only
    kMacNotGroup = -26,        ///< the address is not a group address
    kGroupMissing = -27,       ///< there is no such multicast group
    kGroupTableFull = -28,     ///< there are as many multicast groups as the chip has room for
    kNotFrontPort = -30,       ///< the interface is not a user port of the board
    kQueueFull = -31,          ///< the event queue is full
    kTrunkRange = -40,         ///< not a trunk id of 0 to 7
    kTrunkExists = -41,        ///< the trunk exists already
    kTrunkMissing = -42,       ///< the trunk does not exist
    kTrunkFull = -43,          ///< more ports than a trunk has room for
    kTrunkMember = -44,        ///< a port that is listed twice, a member of another trunk, or the CPU's
    kFieldGroup = -50,         ///< not a group of field rules, 1 to 9
    kFieldRange = -51,         ///< not a field entry of 0 to 1535
    kFieldSlice = -52,         ///< the field entry lies outside its group's slice
    kFieldExists = -53,        ///< the field entry exists already
    kFieldMissing = -54,       ///< the field entry was never created, or was destroyed
    kFieldPair = -55,          ///< not the first half of a pair: an odd entry, or a group that has none
    kFieldAction = -56,        ///< field rules have no action of this number
    kMeterRange = -57,         ///< not a meter of 0 to 63
    kMeterMissing = -58,       ///< the field entry names no meter that is there
    kCounterRange = -59,       ///< not a field counter of 0 to 255
    kMirrorSession = -60,      ///< not a mirror session of 0 to 3
    kMirrorDestination = -61,  ///< copies cannot go to the source port itself, nor to the CPU's
    kMirrorBusy = -62,         ///< the session copies to another port already
    kMirrorMissing = -63,      ///< the session does not mirror so
    kRegisterMissing = -70,    ///< the chip has no register at this address
    kRegisterReadOnly = -71,   ///< the register cannot be written
    kStormType = -75,          ///< storm control has no such type, or the call no meaning for it
    kTagEntryExists = -80,     ///< the table of tags has this entry already
    kTagEntryMissing = -81,    ///< the table of tags has no such entry
    kTagTableFull = -82,       ///< the table of tags has no room
    kStgRange = -90,           ///< not a spanning-tree group of 0 to 15
    kStgExists = -91,          ///< the spanning-tree group exists already
    kStgMissing = -92,         ///< the spanning-tree group does not exist
    kStgIsDefault = -93,       ///< the default group stays, and VLANs leave it only for another one
    kStgNotMember = -94,       ///< the VLAN is not in this spanning-tree group
    kStgState = -95,           ///< not a spanning-tree state of 0 to 4
    kListUnknown = -96,        ///< no list of this kind has this handle and this count
    kTooManyLists = -97,       ///< too many lists were not given back
    kNotSupported = -100,      ///< the virtual device does not carry out this call
    kQueueRange = -110,        ///< not an egress queue that is configured, or not a number of them of 1 to 8
};

constexpr int32_t code(Status status) {
    return static_cast<int32_t>(status);
}

}  // namespace vdevice::chip
