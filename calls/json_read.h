/**
 * @file json_read.h
 * Values from JSON, the inverse of json_value.h. They are written to memory that is zero before; what does not fit is a
 * BadValue, a sentence without its subject.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "calls/element.h"
#include "calls/form.h"
#include "calls/json_memory.h"

namespace calls {

uint64_t read_unsigned(const nlohmann::json &value, uint64_t most);
std::string read_text(const nlohmann::json &value);
void read_octets(const nlohmann::json &value, uint8_t *to, size_t count);
void read_array(const nlohmann::json &value, const Element &element, uint8_t *to, size_t count);
void read_block(const nlohmann::json &value, const Form &form, uint8_t *to);
/** The members of a record; those that are addresses are left alone. */
void read_struct(const nlohmann::json &value, const Struct &layout, uint8_t *to);
/** Those that are addresses, of a record of a frame. */
void read_offsets(const nlohmann::json &value, const Struct &layout, uint8_t *to, uint8_t *frame);
/** An offset into octets as their address. */
uint8_t *read_offset(const nlohmann::json &value, const void *octets, size_t count);

/** @p value, if it is an array. */
const nlohmann::json &array_of(const nlohmann::json &value, size_t most);
/** The member of an object, or null. Throws if @p value is no object. */
const nlohmann::json *find_member(const nlohmann::json &value, const char *name);

/** Throws if the arguments are no object. */
void check_arguments(const nlohmann::json &arguments);

/** Does something with an argument; a BadValue becomes a sentence that names it. */
template <typename Action>
void naming(const Param &param, Action action) {
    try {
        action();
    } catch (const BadValue &bad) {
        throw BadValue(std::string("The argument '") + param.name + "' " + bad.what() + ".");
    }
}

}  // namespace calls
