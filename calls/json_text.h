/**
 * @file json_text.h
 * Calls as JSON, as docs/reference/recordings.md describes it: the same text on every machine. It is written without a
 * library, since it is done around every call of a program under observation.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <span>
#include <string>

#include "calls/element.h"

namespace calls {

/** The most parameters of a call. */
inline constexpr size_t kMostParams = 16;

/** What an argument is in memory: of a value the value itself, of a pointer what it addresses, null for no address. */
struct Block {
    const void *at = nullptr;
    size_t count = 0; /**< elements */
};

/** A block for each parameter of a call. */
using Blocks = std::array<Block, kMostParams>;

/** @p arguments holds the address of each argument, as stubs collect them. */
Blocks blocks_of(std::span<const Param> params, const void *const *arguments);

/** Appends the member of an object for each argument, between braces: what stands in memory before the call. */
void append_arguments(std::string &text, std::span<const Param> params, const Blocks &blocks);

/**
 * Appends those that the call has changed, likewise.
 *
 * @param before  copies of the memory before the call, of what the call may write; the other blocks are not read
 */
void append_outputs(std::string &text, std::span<const Param> params, const Blocks &blocks, const Blocks &before);

/** Appends a result; an address as a number, see address_of(). @p layout is that of a struct whose address it is. */
void append_result(std::string &text, Result kind, const Struct *layout, int64_t result);

/** Appends a text between quotation marks. */
void append_text(std::string &text, const char *value);

}  // namespace calls
