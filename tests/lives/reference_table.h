/**
 * @file reference_table.h
 * The reference model's functions by name, in the order of the library's table of calls.
 */
#ifndef TESTS_LIVES_REFERENCE_TABLE_H
#define TESTS_LIVES_REFERENCE_TABLE_H

#include <span>

#include "adpsh/table.h"

namespace lives {

struct Model {
    const char *name;
    adpsh::Result (*invoke)(void *const *arguments);
};

std::span<const Model> models();

}  // namespace lives

#endif
