// The chip's answer to a request. Each refusal has a number and a name of its own, so that a caller's log tells
// which rule was broken.
#pragma once

#include <stdint.h>
#include <span>

namespace vdevice::chip {

// -1 is not used here: a driver call that never reached the chip gives -1.
enum class Status : int32_t {
    kOk = 0,
    kBadUnit = -2,
    kBadArgument = -3,
    kNoPort = -4,
    kWrongMedium = -5,
    kCpuPort = -6,
    kVlanRange = -10,
    kVlanExists = -11,
    kVlanMissing = -12,
    kVlanIsDefault = -13,
    kUntaggedNotMember = -14,
    kMacTableFull = -20,
    kMacMissing = -21,
    kMacNotUnicast = -22,
    kMacSyntax = -23,
    kMacBucketFull = -24,
    kReservedIndex = -25,
    kMacNotGroup = -26,
    kGroupMissing = -27,
    kGroupTableFull = -28,
    kNotFrontPort = -30,
    kQueueFull = -31,
    kTrunkRange = -40,
    kTrunkExists = -41,
    kTrunkMissing = -42,
    kTrunkFull = -43,
    kTrunkMember = -44,
    kFieldGroup = -50,
    kFieldRange = -51,
    kFieldSlice = -52,
    kFieldExists = -53,
    kFieldMissing = -54,
    kFieldPair = -55,
    kFieldAction = -56,
    kMeterRange = -57,
    kMeterMissing = -58,
    kCounterRange = -59,
    kMirrorSession = -60,
    kMirrorDestination = -61,
    kMirrorBusy = -62,
    kMirrorMissing = -63,
    kRegisterMissing = -70,
    kRegisterReadOnly = -71,
    kStormType = -75,
    kTagEntryExists = -80,
    kTagEntryMissing = -81,
    kTagTableFull = -82,
    kStgRange = -90,
    kStgExists = -91,
    kStgMissing = -92,
    kStgIsDefault = -93,
    kStgNotMember = -94,
    kStgState = -95,
    kListUnknown = -96,
    kTooManyLists = -97,
    kNotSupported = -100,
    kQueueRange = -110,
};

struct StatusEntry {
    Status status;
    const char *name;
    const char *meaning;
};

/** All refusals, and success. */
std::span<const StatusEntry> status_table();

/** The status's row of the table, or a row named "unknown". */
const StatusEntry &describe(Status status);

constexpr int32_t code(Status status) {
    return static_cast<int32_t>(status);
}

}  // namespace vdevice::chip
