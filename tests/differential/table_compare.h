/**
 * @file table_compare.h
 * The library's tables against the model's, byte by byte.
 */
#pragma once

#include <string>

namespace differential {

/** The first table that differs, with what stands in it; empty when all are equal. */
std::string table_difference();

}  // namespace differential
