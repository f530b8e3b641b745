/**
 * @file form.h
 * In which form JSON has a block of memory: what both directions, json_text.h and json_memory.h, have to agree on.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>

#include "calls/element.h"
#include "calls/json_text.h"

namespace calls {

struct Form {
    enum class Kind : uint8_t { kOne, kArray, kOctets, kText, kPorts };

    Kind kind;
    const Element *element;
    size_t count; /**< elements */
};

/** @p blocks has the number that says what octets mean, if the parameter has one. */
Form form_of(std::span<const Param> params, size_t index, const Blocks &blocks);

/** Likewise, @p record is the struct that holds the member. */
Form form_of(const Struct &layout, const Field &field, const void *record);

/** @name A record of a frame */
/** @{ */
inline constexpr size_t kMostFrameOffset = UINT16_MAX; /**< an address further from the frame's beginning is null */

bool is_frame(const Field &field);
/** The address in a member. */
uint8_t *address_in(const Field &field, const void *record);
/** The address of the frame. */
uint8_t *frame_of(const Struct &layout, const void *record);
/** The octets of the frame by the length in the record. */
size_t frame_length(const Param &param, const void *record);
/** Those that are there: 0 without a frame, and at most kMostElements. */
size_t frame_octets(const Param &param, const void *record);
/** @} */

/** The octets into which the address that a call sets is an offset. */
Block octets_beside(std::span<const Param> params, const Blocks &blocks);

}  // namespace calls
