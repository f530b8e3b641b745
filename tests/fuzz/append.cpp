// The calls that append to rule records: each call against a copy of the record that is filled by the contract.
//
// Input: the counts that the record starts with, then calls until it ends.
#include <algorithm>
#include <cstring>
#include <memory>

#include "tests/fuzz/fuzz.h"
#include "tests/support/library_state.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;

constexpr int32_t kQualifiers = 16;
constexpr int32_t kActions = 8;
constexpr int32_t kQualifierBytes = 64;
constexpr int32_t kActionBytes = 256;
constexpr int kMostCalls = 64;

/** A block and the length given to the call; longer than the block only where the call must not read it. */
struct Block {
    Bytes bytes;
    int32_t length = 0;
    bool is_null = false;

    /** An empty block has an address too. */
    [[nodiscard]] const uint8_t *data() const {
        static constexpr uint8_t kNothing = 0;
        return is_null ? nullptr : (bytes.empty() ? &kNothing : bytes.data());
    }
};

/** Mostly small lengths, sometimes any 32 bits. */
int32_t read_length(fuzz::Input *input) {
    constexpr uint8_t kAnyNumber = 0xFF;
    constexpr int32_t kStep = 2;
    const uint8_t code = input->u8();
    return code == kAnyNumber ? static_cast<int32_t>(input->u32()) : code * kStep - (input->flag() ? 1 : 0);
}

Block read_block(fuzz::Input *input, int32_t most) {
    Block block;
    block.length = read_length(input);
    if (block.length > 0 && block.length <= most) {
        const auto size = static_cast<size_t>(block.length);
        block.bytes = input->bytes(size);
        block.bytes.resize(size);
    }
    return block;
}

void set_condition(uint8_t *field, const Block &block) {
    if (block.length == 2) {
        uint16_t half = 0;
        std::memcpy(&half, block.data(), sizeof half);
        const uint32_t word = half;
        std::memcpy(field, &word, sizeof word);
    } else {
        std::copy(block.bytes.begin(), block.bytes.end(), field);
    }
}

bool fits_condition(const Block &block) {
    return block.length >= 0 && block.length <= kQualifierBytes;
}

int32_t expected_qualifier(FpEntity *entity, uint32_t type, const Block &data, const Block &mask) {
    if (entity->qualify_num < 0 || entity->qualify_num >= kQualifiers || !fits_condition(data) ||
        !fits_condition(mask)) {
        return -1;
    }
    FpQualify &qualifier = entity->qualifies[entity->qualify_num];
    qualifier.type = type;
    set_condition(qualifier.data, data);
    set_condition(qualifier.mask, mask);
    return entity->qualify_num++;
}

bool fits_action(const Block &block) {
    return block.is_null || block.length <= kActionBytes;
}

int32_t expected_action(FpEntity *entity, uint32_t type, const Block &param, const Block &param2) {
    if (entity->action_num < 0 || entity->action_num >= kActions || !fits_action(param) || !fits_action(param2)) {
        return -1;
    }
    FpAction &action = entity->actions[entity->action_num];
    action.type = type;
    const Block *const blocks[] = {&param, &param2};
    uint8_t *const fields[] = {action.param, action.param2};
    for (int i = 0; i < 2; ++i) {
        if (!blocks[i]->is_null) {
            std::copy(blocks[i]->bytes.begin(), blocks[i]->bytes.end(), fields[i]);
        }
    }
    return entity->action_num++;
}

void add_qualifier(fuzz::Input *input, FpEntity *entity, FpEntity *expected) {
    const uint32_t type = input->u16();
    const Block data = read_block(input, kQualifierBytes);
    const Block mask = read_block(input, kQualifierBytes);
    const int32_t index = expected_qualifier(expected, type, data, mask);
    expect(adp_fp_add_entity_qualify(entity, type, data.data(), static_cast<uint32_t>(data.length), mask.data(),
                                     mask.length) == index,
           "the qualifier's index");
}

void add_action(fuzz::Input *input, FpEntity *entity, FpEntity *expected) {
    const uint32_t type = input->u16();
    Block param = read_block(input, kActionBytes);
    Block param2 = read_block(input, kActionBytes);
    param.is_null = input->flag();
    param2.is_null = input->flag();
    const int32_t index = expected_action(expected, type, param, param2);
    expect(adp_fp_add_entity_action(entity, type, param.data(), param.length, param2.data(), param2.length) == index,
           "the action's index");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::be_quiet();
    fuzz::Input input(data, size);
    // On the heap, so that the sanitizer finds writes beyond the record.
    const auto entity = std::make_unique<FpEntity>();
    const auto expected = std::make_unique<FpEntity>();
    std::memset(entity.get(), 0, sizeof *entity);
    entity->qualify_num = static_cast<int8_t>(input.u8());
    entity->action_num = static_cast<int8_t>(input.u8());
    std::memcpy(expected.get(), entity.get(), sizeof *entity);
    for (int call = 0; call < kMostCalls && !input.is_empty(); ++call) {
        if (input.flag()) {
            add_qualifier(&input, entity.get(), expected.get());
        } else {
            add_action(&input, entity.get(), expected.get());
        }
        expect(std::memcmp(entity.get(), expected.get(), sizeof *entity) == 0, "the record");
    }
    return 0;
}
