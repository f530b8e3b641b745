/**
 * @file records.h
 * Random contents of records, which read the same in either byte order.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "calls/exported.h"
#include "tests/differential/random.h"

namespace differential {

/** Stores a number of the type's size. */
void store(const calls::Element &type, uint64_t number, uint8_t *to);

/** Fills bytes so that each word is the same number in either byte order: its four bytes are equal. */
void fill_equal_bytes(Random &random, uint8_t *to, size_t size);

/** Fills a rule record; with equal bytes its data are the same in either byte order. */
void fill_rule(Random &random, bool as_equal_bytes, uint8_t *to);

/** Fills one element of an array, a field or a value with this name. */
void fill_element(Random &random, const calls::Element &type, const char *name, uint8_t *to);

}  // namespace differential
