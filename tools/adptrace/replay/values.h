/**
 * @file values.h
 * What a call was given and what it gave, as a recording says it and as it is now, made fit to be compared.
 */
#pragma once

#include <stdint.h>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "calls/call_table.h"
#include "calls/json_text.h"

namespace adptrace::replay {

/** Words that calls gave, handles of lists for instance: one of the recording stands for another one now. */
class Words {
  public:
    /** Words of two outputs of the same name. */
    void learn(std::span<const calls::Param> params, const nlohmann::json &recorded, const nlohmann::json &now);
    /** Replaces the recording's words among arguments. */
    void replace(std::span<const calls::Param> params, nlohmann::json &arguments) const;

  private:
    std::map<std::pair<std::string_view, uint64_t>, uint64_t> now_;
};

/** Two values that differ, and where: `members[2]`. */
struct Difference {
    std::string where;
    std::string recorded;
    std::string now;
};

/** A value on one line, cut if it is long. */
std::string text_of(const nlohmann::json &value);

/** A call: `user_vlan_create {"unit":0,"vid":100}`. */
std::string call_text(std::string_view name, const nlohmann::json &arguments);

/** The arguments of a call that is about to be made. */
nlohmann::json arguments_now(std::span<const calls::Param> params, const calls::Blocks &blocks);

/** What a call has changed since copies_of() its memory were made. */
nlohmann::json outputs_now(std::span<const calls::Param> params, const calls::Blocks &blocks,
                           const calls::Blocks &before);

/** A result as recordings have it. */
nlohmann::json result_now(calls::Result kind, const calls::Struct *layout, int64_t result);

/** The first difference of what a call is given, if there is one; words have the @p word_bits of the narrower machine.
 */
std::optional<Difference> difference_of_arguments(std::string_view call, std::span<const calls::Param> params,
                                                  const nlohmann::json &recorded, const nlohmann::json &now,
                                                  uint32_t word_bits);

/** Likewise of what it has written. */
std::optional<Difference> difference_of_outputs(std::string_view call, std::span<const calls::Param> params,
                                                const nlohmann::json &recorded, const nlohmann::json &now);

/** Likewise of results. */
std::optional<Difference> difference_of_results(std::string_view call, const nlohmann::json &recorded,
                                                const nlohmann::json &now);

}  // namespace adptrace::replay
