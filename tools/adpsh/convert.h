/**
 * @file convert.h
 * Turns written values into the bytes that a call reads. A value that does not fit is a LineError.
 */
#pragma once

#include "calls/element.h"
#include "tools/adpsh/parser.h"

#include <stddef.h>
#include <stdint.h>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace adpsh {

using Bytes = std::vector<uint8_t>;
/** Byte strings by name, written $NAME on a line. */
using Variables = std::map<std::string, Bytes, std::less<>>;

/** Elements of an array that a line may give or ask for. */
constexpr size_t kMaxElements = 64 * 1024;
/** Size of the memory for words that a line gives as a list in place of an address. */
constexpr size_t kWordListBytes = 256;
/** Words of a set of ports. */
constexpr size_t kPortSetWords = 8;

/** What conversions need besides the value: the variables, and memory that lives as long as the call. */
struct Context {
    const Variables &variables;
    std::deque<Bytes> &blocks;
};

/** Throws a LineError for more elements than the limit. */
void check_count(size_t elements, size_t limit);

/** Whether the word `null` is written: no address. */
bool is_null(const Value &value);

/** A number, the name of a constant, or an aggregation interface: agg3, ADP_AGG_INTF(3). */
int64_t number_of(const Value &value, calls::Kind kind);

/** Bytes as hexadecimal digits, with or without colons, as a list, or as $NAME. */
Bytes bytes_of(const Value &value, const Variables &variables);

/** Writes one element to `to`. */
void store_element(const calls::Element &element, const Value &value, void *to, Context &context);

/** An array as its bytes: `[a, b]`, byte strings, sets `{1, 5}` where `words` is the size of the bitmap, else 0. */
Bytes array_of(const calls::Element &element, const Value &value, size_t words, Context &context);

}  // namespace adpsh
