// The conditions of a rule as the index compares them: equality under masks, word by word.
#pragma once

#include <stdint.h>
#include <optional>
#include <vector>

#include "vdevice/chip/fields/field.h"
#include "vdevice/chip/frame/port_set.h"

namespace vdevice::chip {

/** One word of a frame's key that must be equal to the data under the mask. The data has no other bits. */
struct RuleTerm {
    uint32_t word;
    uint32_t mask;
    uint32_t data;
};

struct RuleTerms {
    uint32_t present = 0;           /**< the fields that the frame must have, a bit for each */
    PortSet ports = PortSet::all(); /**< that it may come in on */
    std::vector<RuleTerm> terms;    /**< in the order of the key's words, each of which occurs once at most */

    /** Adds the condition to the others; false if no frame can meet them all. */
    bool add(const Qualifier &qualifier);
    /** Turns a single ingress port into a term. To be called once, after the last condition. */
    void close();

  private:
    bool add_term(const RuleTerm &term);
};

/** Nothing if no frame can meet them all. */
std::optional<RuleTerms> make_terms(const std::vector<Qualifier> &first, const std::vector<Qualifier> *second);

}  // namespace vdevice::chip
