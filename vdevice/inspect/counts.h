// Counts in answers, and the difference of two readings of them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>

namespace vdevice::inspect {

struct Subject;

using CountNames = std::span<const char *const>;

/** Whether one of the named counts, at any depth, is not 0. */
bool has_nonzero_count(const nlohmann::json &value, CountNames names);

/**
 * Takes the counts of the earlier reading "since" of the request off those of the answer, or makes a rate of both where
 * the request has "per_second". A count that has begun again since, or is of a row that was not there, is taken whole.
 * Gives the seconds between the readings; throws a Refusal if the earlier reading is none.
 */
double subtract_earlier(nlohmann::json &answer, const nlohmann::json &request, const Subject &subject);

}  // namespace vdevice::inspect
