// The qualifiers: which driver call each type is, what it takes, and on which half of a double-wide rule it belongs.
#pragma once

#include "core/messages.h"
#include "fp/entry.h"

namespace adp {

/** How a qualifier's driver call takes data and mask. */
enum class QualifierForm : uint8_t { kPointers, kWords, kLow16, kLow8, kWordNoMask, kPorts };

union QualifierCall {
    int32_t (*pointers)(int32_t, uint32_t, uint32_t, const uint8_t *, const uint8_t *);
    int32_t (*words)(int32_t, uint32_t, uint32_t, uint32_t, uint32_t);
    int32_t (*word)(int32_t, uint32_t, uint32_t, uint32_t);
    int32_t (*ports)(int32_t, uint32_t, uint32_t, adp_port_set_t, adp_port_set_t);

    constexpr explicit QualifierCall(decltype(pointers) call) : pointers(call) {}
    constexpr explicit QualifierCall(decltype(words) call) : words(call) {}
    constexpr explicit QualifierCall(decltype(word) call) : word(call) {}
    constexpr explicit QualifierCall(decltype(ports) call) : ports(call) {}
};

struct Qualifier {
    uint16_t type;
    QualifierForm form;
    /** Groups in which it belongs on the rule's second entry: bit g for group g. */
    uint8_t second_half_groups;
    QualifierCall call;
    int32_t log_line;
    const char *log_format;
};

/** Null for an unknown type. */
const Qualifier *find_qualifier(uint32_t type);

constexpr bool belongs_on_second_half(const FpInfo &row, const Qualifier *qualifier) {
    return qualifier != nullptr && is_double(row) && (qualifier->second_half_groups >> row.group & 1) != 0;
}

/** Makes the qualifier's driver call. */
int32_t apply_qualifier(const Qualifier &qualifier, const FpQualify &condition, uint32_t unit, uint32_t entry);

/** A bitmap of interfaces, from the bytes of a record's field, as physical ports of a unit. */
adp_port_set_t phy_ports_of(const uint8_t *field, uint32_t unit);

}  // namespace adp
