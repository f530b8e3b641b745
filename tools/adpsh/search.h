/**
 * @file search.h
 * Finds what a word is about, spelt right or as the exported names spell it.
 */
#pragma once

#include "calls/exported.h"

#include <string>
#include <string_view>
#include <vector>

namespace adpsh {

/** Whether the name contains the word, or has a part that is the word but for one typing error. */
bool is_like(std::string_view word, std::string_view name);

/** Calls whose name is like the word; then those whose purpose or topic has it, or that take a constant that it names.
 */
std::vector<const exported::Call *> calls_about(std::string_view word);
/** Constants with the word in name or remark. */
std::vector<const exported::Constant *> constants_about(std::string_view word);
/** Structs with the word in their name or that of a field. */
std::vector<const exported::Structure *> structures_about(std::string_view word);
std::vector<const exported::Table *> tables_about(std::string_view word);

/** A description's first sentence. */
std::string purpose_of(std::string_view doc);

}  // namespace adpsh
