/**
 * @file describe.h
 * Describes what the headers have, and topics: the answers of help.
 */
#pragma once

#include "calls/exported.h"
#include "tools/adpsh/report.h"
#include "tools/adpsh/topics.h"

#include <optional>
#include <string>

namespace adpsh {

Answer describe(const exported::Call &call);
Answer describe(const exported::Table &table);
Answer describe(const exported::Constant &constant);
Answer describe(const exported::Structure &structure);
Answer describe(const Topic &topic);

/** The constants of an enumeration; nothing if none has this tag. */
std::optional<Answer> describe_enumeration(const std::string &tag);

}  // namespace adpsh
