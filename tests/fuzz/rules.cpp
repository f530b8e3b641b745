// The calls that append to rule records, and remark requests, with any content: no access beyond the record, and the
// list holds one rule for each number. What the records hold is said by the reference model of tests/differential.
//
// Input: which driver call fails and with what, the counts that the record starts with, then calls until it ends.
#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

#include "tests/fuzz/fuzz.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;

constexpr int kMostCalls = 64;
constexpr int32_t kLongest = 256; /**< the longest block that a call reads; of others only the length is given */

int32_t read_signed_byte(fuzz::Input *input) {
    constexpr int32_t kSign = 0x80;
    return (input->u8() ^ kSign) - kSign;
}

struct Block {
    Bytes bytes;
    int32_t length = 0;
};

/** Mostly small lengths, sometimes any 32 bits. */
Block read_block(fuzz::Input *input) {
    constexpr uint8_t kAnyNumber = 0xFF;
    const uint8_t code = input->u8();
    Block block;
    block.length = code == kAnyNumber ? static_cast<int32_t>(input->u32()) : code * 2 - (input->flag() ? 1 : 0);
    if (block.length > 0 && block.length <= kLongest) {
        block.bytes = input->bytes(static_cast<size_t>(block.length));
        block.bytes.resize(static_cast<size_t>(block.length));
        block.bytes.shrink_to_fit();
    }
    return block;
}

template <typename Count, typename Call>
void append(Count &count, int32_t most, Call call) {
    const Count before = count;
    const int32_t index = call();
    expect(index == -1 ? count == before : index == before && count == before + 1 && count <= most, "the count");
}

void append(fuzz::Input *input, FpEntity *entity) {
    const bool is_qualifier = input->flag();
    const uint32_t type = input->u16();
    const Block first = read_block(input);
    const Block second = read_block(input);
    static constexpr uint8_t kNothing = 0;
    const auto address = [](const Block &block) { return block.bytes.empty() ? &kNothing : block.bytes.data(); };
    if (is_qualifier) {
        append(entity->qualify_num, ADP_FP_QUALIFIERS, [&] {
            return adp_fp_add_entity_qualify(entity, type, address(first), static_cast<uint32_t>(first.length),
                                             address(second), second.length);
        });
    } else {
        const uint8_t *const param2 = input->flag() ? nullptr : address(second);
        append(entity->action_num, ADP_FP_ACTIONS, [&] {
            return adp_fp_add_entity_action(entity, type, address(first), first.length, param2, second.length);
        });
    }
}

void add_remark(fuzz::Input *input, std::set<uint32_t> *installed) {
    RemarkRule rule = {};
    rule.rule_id = input->u8();
    rule.port_bitmap[0] = input->u32();
    rule.port_bitmap[1] = input->u32();
    rule.remark_kind = input->u8();
    rule.remark_value = input->u8();
    rule.rule_form = input->u8();
    rule.match_field = input->u8();
    const Bytes value = input->bytes(sizeof rule.match_value);
    std::copy(value.begin(), value.end(), rule.match_value);
    if (adp_add_remark_rule(&rule) != ADP_E_SELECTOR) {
        installed->insert(rule.rule_id);
    }
}

/** Makes every call of one name fail. */
void script_failures(fuzz::Input *input) {
    const char *const names[] = {"user_field_entry_create_id", "user_field_entry_prio_set",
                                 "user_field_qualify_InPorts", "user_field_action_add",
                                 "user_field_entry_install",   "user_field_entry_destroy"};
    if (const size_t chosen = input->u8(); chosen < std::size(names)) {
        recording::driver().fail_every(names[chosen], read_signed_byte(input));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::be_quiet();
    fuzz::Input input(data, size);
    recording::driver().reset();
    recording::driver().record(false);
    library_test::drop_rules();
    expect(library_test::fill_default_map(), "the map is filled");
    script_failures(&input);
    // On the heap, so that the sanitizer finds accesses beyond the record.
    const auto entity = std::make_unique<FpEntity>();
    std::memset(entity.get(), 0, sizeof *entity);
    entity->qualify_num = read_signed_byte(&input);
    entity->action_num = read_signed_byte(&input);
    std::set<uint32_t> installed;
    for (int call = 0; call < kMostCalls && !input.is_empty(); ++call) {
        switch (input.u8() % 4) {
            case 0:
                append(&input, entity.get());
                break;
            case 1: {
                const uint32_t id = input.u8();
                adp_del_remark_rule(id);
                installed.erase(id);
                break;
            }
            default:
                add_remark(&input, &installed);
        }
        expect(library_test::installed_rules().size() == installed.size(), "one rule for each number");
    }
    library_test::drop_rules();
    library_test::drop_map();
    return 0;
}
