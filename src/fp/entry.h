// What the files of the field processor share: the driver's handle, hardware entries and words inside byte fields.
#pragma once

#include <adp/fp.h>
#include <string.h>

namespace adp {

/** First argument of the driver's field-processor calls. */
inline constexpr int32_t fp_handle = 0;

/** The unit of calls without a rule record. */
inline constexpr uint32_t kFieldUnit = 0;

/** The hardware entry of an entity; logged. */
uint32_t true_entry_of(const FpInfo &row, uint32_t entity_id);

/** Whether the submodule's rules take two entries. */
constexpr bool is_double(const FpInfo &row) {
    return row.group == 1 || row.group == 5;
}

// The scalar of a field is its first word. Fields are bytes, so that records have no padding. Each is aligned for a
// word, which saves the target a call to copy four bytes.

inline uint32_t load_word(const uint8_t *field) {
    uint32_t word = 0;
    memcpy(&word, __builtin_assume_aligned(field, alignof(uint32_t)), sizeof word);
    return word;
}

inline void store_word(uint8_t *field, uint32_t word) {
    memcpy(__builtin_assume_aligned(field, alignof(uint32_t)), &word, sizeof word);
}

}  // namespace adp
