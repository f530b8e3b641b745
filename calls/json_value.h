/**
 * @file json_value.h
 * Values as JSON, appended to a text: what json_text.cpp makes the text of a call of.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string>

#include "calls/element.h"
#include "calls/form.h"

namespace calls {

inline const uint8_t *byte_at(const void *base, size_t offset) {
    return static_cast<const uint8_t *>(base) + offset;
}

/** Octets up to the last one that is not 0. */
size_t used_octets(const void *at, size_t size);

void append_unsigned(std::string &text, uint64_t number);
void append_signed(std::string &text, int64_t number);
void append_octets(std::string &text, const void *at, size_t count);
/** The text ends with a NUL or after @p most characters. */
void append_chars(std::string &text, const char *chars, size_t most);
void append_array(std::string &text, const Element &element, const void *at, size_t count);
void append_block(std::string &text, const Form &form, const void *at);
void append_struct(std::string &text, const Struct &layout, const void *record);
/** The name of a member of an object. */
void append_name(std::string &text, bool is_first, const char *name);

}  // namespace calls
