/**
 * @file reference_table.h
 * The reference model's functions by name, in the order of the library's table of calls.
 */
#pragma once

#include <span>

#include "tools/adpsh/table.h"

namespace differential {

struct Model {
    const char *name;
    adpsh::Result (*invoke)(void *const *arguments);
};

std::span<const Model> models();

}  // namespace differential
