/**
 * @file reference_table.h
 * The reference model's functions, in the order of the library's table of calls.
 */
#pragma once

#include <span>

namespace differential {

std::span<void *const> models();

}  // namespace differential
