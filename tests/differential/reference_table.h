/**
 * @file reference_table.h
 * The reference model's functions by name, in the order of the library's table of calls.
 */
#pragma once

#include <span>

namespace differential {

struct Model {
    const char *name;
    void *function;
};

std::span<const Model> models();

}  // namespace differential
