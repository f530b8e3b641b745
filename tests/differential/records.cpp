// Fields by name, rule records by hand.
#include "tests/differential/records.h"

#include <adp/adp.h>

#include <cstring>
#include <string_view>

#include "tests/differential/values.h"

namespace differential {

void store(const calls::Element &type, uint64_t number, uint8_t *to) {
    calls::store(type.kind, to, static_cast<int64_t>(number));
}

void fill_equal_bytes(Random &random, uint8_t *to, size_t size) {
    for (size_t n = 0; n < size; ++n) {
        to[n] = n % sizeof(uint32_t) == 0 ? static_cast<uint8_t>(random.next()) : to[n - 1];
    }
}

namespace {

void fill_words(Random &random, uint8_t *to, size_t size) {
    for (size_t n = 0; n < size; n += sizeof(uint32_t)) {
        store(calls::kWord32, n == 0 ? any_number(random) : random.sparse(), to + n);
    }
}

void fill_qualifier(Random &random, FpQualify &qualify, bool as_equal_bytes) {
    constexpr uint32_t kTypes[] = {0, 1, 6, 7, 9, 10, 13, 13, 18, 19, 21, 22, 23, 27, 28, 29, 30, 31, 61, 89, 332, 5};
    constexpr uint32_t kFirstWordType = 9;  // those below are addresses, which are bytes
    qualify.type = random.one_of(kTypes);
    if (as_equal_bytes || qualify.type < kFirstWordType) {
        fill_equal_bytes(random, qualify.data, sizeof qualify.data);
        fill_equal_bytes(random, qualify.mask, sizeof qualify.mask);
    } else {
        fill_words(random, qualify.data, sizeof(adp_ports_t));
        fill_words(random, qualify.mask, sizeof(adp_ports_t));
    }
}

void fill_action(Random &random, FpAction &action) {
    constexpr uint32_t kTypes[] = {30, 30, 33, 33, 53, 53, 1, 11, 77};
    action.type = random.one_of(kTypes);
    fill_words(random, action.param, sizeof(adp_ports_t));
    store(calls::kWord32, random.below(20), action.param2);
}

void fill_entity(Random &random, FpEntity &entity, bool as_equal_bytes) {
    constexpr int32_t kOddCounts[] = {-1, 8, 9, 15, 16, 17};
    const auto count = [&](uint32_t few) {
        return random.one_in(10) ? random.one_of(kOddCounts) : static_cast<int32_t>(random.below(few));
    };
    entity.submodule_type = number_for(random, "submodule_type");
    entity.unit = random.one_in(10) ? 1 : 0;
    entity.entity_id = number_for(random, "entity_id");
    entity.true_entry = random.next();
    entity.priority = random.below(8);
    entity.qualify_num = count(4);
    entity.action_num = count(3);
    for (int32_t n = 0; n < entity.qualify_num && n < ADP_FP_QUALIFIERS; ++n) {
        fill_qualifier(random, entity.qualifies[n], as_equal_bytes);
    }
    for (int32_t n = 0; n < entity.action_num && n < ADP_FP_ACTIONS; ++n) {
        fill_action(random, entity.actions[n]);
    }
}

void refine_remark_rule(Random &random, RemarkRule &rule) {
    constexpr uint8_t kForms[] = {1, 1, 1, 7, 3};
    rule.rule_form = random.one_of(kForms);
    rule.rule_id = static_cast<uint16_t>(random.below(5));
    rule.remark_kind = static_cast<uint8_t>(random.below(4));
    rule.match_field = static_cast<uint8_t>(random.below(14));
    fill_equal_bytes(random, rule.match_value, sizeof rule.match_value);
}

void fill_submodule(Random &random, FpInfo &info) {
    info = {static_cast<int32_t>(1 + random.below(45)), static_cast<int32_t>(random.below(11)), 0, -1, -1,
            static_cast<int32_t>(random.below(130)) - 9};
}

/** Fills a record that has a type of its own: copies it out, changes it and copies it back. */
template <typename T, typename Fill>
void fill_as(uint8_t *to, Fill fill) {
    T record;
    std::memcpy(&record, to, sizeof record);
    fill(record);
    std::memcpy(to, &record, sizeof record);
}

void fill_record(Random &random, const calls::Struct &record, uint8_t *to) {
    const std::string_view type = record.name;
    if (type == "FpEntity") {
        fill_rule(random, false, to);
        return;
    }
    for (const calls::Field &field : record.fields) {
        for (size_t n = 0; n < field.count; ++n) {
            fill_element(random, field.element, field.name, to + field.offset + n * field.element.size);
        }
    }
    if (type == "RemarkRule") {
        fill_as<RemarkRule>(to, [&](RemarkRule &rule) { refine_remark_rule(random, rule); });
    } else if (type == "FpInfo") {
        fill_as<FpInfo>(to, [&](FpInfo &info) { fill_submodule(random, info); });
    }
}

}  // namespace

void fill_rule(Random &random, bool as_equal_bytes, uint8_t *to) {
    FpEntity entity{};
    fill_entity(random, entity, as_equal_bytes);
    std::memcpy(to, &entity, sizeof entity);
}

void fill_element(Random &random, const calls::Element &type, const char *name, uint8_t *to) {
    const std::string_view what = name;
    if (type.kind == calls::Kind::kStruct) {
        fill_record(random, *type.layout, to);
    } else if (type.is_interface) {
        store(type, any_interface(random), to);
    } else if (what == "members" || what == "untagged" || what == "bitmap" || what == "word") {
        store(type, random.one_in(3) ? random.next() : random.sparse(), to);
    } else if (type.size == 1) {
        store(type, random.next(), to);
    } else {
        store(type, number_for(random, what), to);
    }
}

}  // namespace differential
