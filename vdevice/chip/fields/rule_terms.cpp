// Joins the conditions of a rule, or of the two halves of one.
#include "vdevice/chip/fields/rule_terms.h"

#include <algorithm>

#include "vdevice/chip/fields/field_key.h"

namespace vdevice::chip {

bool RuleTerms::add(const Qualifier &qualifier) {
    if (qualifier.field == Field::kInPorts) {
        ports &= PortSet::from_words(qualifier.data.data()) & PortSet::from_words(qualifier.mask.data());
        return !ports.empty();
    }
    const size_t first = first_key_word(qualifier.field);
    for (size_t i = 0; i < key_words(qualifier.field); ++i) {
        const uint32_t mask = qualifier.mask[i];
        if (mask == 0) {
            continue;
        }
        present |= bit_of(qualifier.field);
        if (!add_term({static_cast<uint32_t>(first + i), mask, qualifier.data[i] & mask})) {
            return false;
        }
    }
    return true;
}

void RuleTerms::close() {
    if (ports.size() != 1) {
        return;
    }
    ports.for_each([&](int port) {
        add_term({static_cast<uint32_t>(first_key_word(Field::kInPorts)), ~uint32_t{0}, static_cast<uint32_t>(port)});
    });
}

/** The halves of a pair may ask for different bits of one word, and even for the same bits in two ways. */
bool RuleTerms::add_term(const RuleTerm &term) {
    const auto place = std::lower_bound(terms.begin(), terms.end(), term,
                                        [](const RuleTerm &a, const RuleTerm &b) { return a.word < b.word; });
    if (place == terms.end() || place->word != term.word) {
        terms.insert(place, term);
        return true;
    }
    const bool agrees = ((place->data ^ term.data) & place->mask & term.mask) == 0;
    place->mask |= term.mask;
    place->data |= term.data;
    return agrees;
}

std::optional<RuleTerms> make_terms(const std::vector<Qualifier> &first, const std::vector<Qualifier> *second) {
    RuleTerms terms;
    for (const auto *half : {&first, second}) {
        if (half != nullptr &&
            !std::all_of(half->begin(), half->end(), [&](const Qualifier &each) { return terms.add(each); })) {
            return std::nullopt;
        }
    }
    terms.close();
    return terms;
}

}  // namespace vdevice::chip
