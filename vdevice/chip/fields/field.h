// What the field processor can match: the fields of a frame, by their numbers, and one condition on one of them.
// docs/reference/field-processor.md shows the same rows; a test compares the two.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <span>

#include "vdevice/chip/frame/encapsulation.h"

namespace vdevice::chip {

enum class Field : uint8_t {
    kSourceIpv6,
    kDestinationIpv6,
    kSourceMac,
    kDestinationMac,
    kSourceIpv4,
    kDestinationIpv4,
    kInPorts,
    kOuterVid,
    kOuterPriority,
    kInnerFormat,
    kInnerVid,
    kInnerPriority,
    kSourcePort,
    kDestinationPort,
    kEtherType,
    kProtocol,
    kDscp,
    kIpKind,
    kFrameKind,
    kTrafficClass,
    kCount,
};

constexpr size_t kFields = static_cast<size_t>(Field::kCount);

struct FieldInfo {
    Field field;
    uint32_t code; /**< the field's number in the library's rules */
    const char *name;
    unsigned bits;
};

/** One row for each field, in the order of Field. */
std::span<const FieldInfo> field_table();
const FieldInfo &describe(Field field);

/** A field's value, most significant word first, and right-aligned in as many words as the field needs. */
using FieldWords = std::array<uint32_t, 8>;

/** A condition on one field: equal under the mask, except for the ingress port, which must be in both sets. */
struct Qualifier {
    Field field = Field::kCount;
    FieldWords data{};
    FieldWords mask{};

    friend bool operator==(const Qualifier &, const Qualifier &) = default;
};

/** A condition on a field of one word. */
constexpr Qualifier qualifier(Field field, uint32_t data, uint32_t mask) {
    return Qualifier{field, {data}, {mask}};
}

/** Kinds of packets. A rule may ask for one; each frame is of several. */
enum class IpKind : uint8_t { kAny = 0, kNotIp = 1, kIp = 2, kArp = 3, kIpv4 = 5, kIpv6 = 10, kCount };

/** Formats of the innermost tag. */
enum class TagFormat : uint8_t { kNone = 0, kPriority = 1, kVlan = 2 };

/** The bit that stands for a kind in a frame's set of kinds. */
template <typename Kind>
constexpr uint32_t bit_of(Kind kind) {
    return uint32_t{1} << static_cast<unsigned>(kind);
}

bool is_ip_kind(uint32_t code);
bool is_frame_kind(uint32_t code);

/** False if the condition compares bits beyond the field's width, so that no frame could meet it. */
bool is_possible(const Qualifier &qualifier);

}  // namespace vdevice::chip
