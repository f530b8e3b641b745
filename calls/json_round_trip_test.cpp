// Every call with random arguments: memory to text, and the text to memory.
#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "calls/call_table.h"
#include "calls/exported.h"
#include "calls/json_memory.h"
#include "tests/support/random_call.h"

namespace json_round_trip_test {

using calls::Blocks;
using calls::Kind;
using calls::Memory;
using calls::Param;
using calls::Shape;
using nlohmann::json;
using random_call::Random;
using random_call::RandomCall;

constexpr uint64_t kRounds = 6;

struct Named {
    std::string name;
    std::span<const Param> params;
};

/** All calls of both boundaries. */
std::vector<Named> every_call() {
    std::vector<Named> every;
    for (const exported::Call &call : exported::calls()) {
        every.push_back({call.name, call.params});
    }
    for (const calls::Call &call : calls::calls()) {
        every.push_back({call.name, call.params});
    }
    every.push_back({"Log_logging_func", calls::log_params()});
    return every;
}

template <typename Test>
void for_random_calls(Test test) {
    uint64_t seed = 0;
    for (const Named &call : every_call()) {
        for (uint64_t round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
            Random random(++seed);
            test(call, RandomCall(call.params, random), seed);
        }
    }
}

std::string arguments_text(std::span<const Param> params, const Blocks &blocks) {
    std::string text;
    append_arguments(text, params, blocks);
    return text;
}

std::string outputs_text(std::span<const Param> params, const Blocks &blocks, const Blocks &before) {
    std::string text;
    append_outputs(text, params, blocks, before);
    return text;
}

/** Octets that hold no address. */
bool is_plain(const Param &param) {
    return param.element.kind != Kind::kCallback && (param.shape == Shape::kPlain || param.shape == Shape::kPortsWord);
}

void expect_equal_memory(const Named &call, const Blocks &blocks, const Blocks &expected) {
    for (size_t index = 0; index < call.params.size(); ++index) {
        const Param &param = call.params[index];
        ASSERT_EQ(blocks[index].at == nullptr, expected[index].at == nullptr) << call.name << " " << param.name;
        ASSERT_EQ(blocks[index].count, expected[index].count) << call.name << " " << param.name;
        if (is_plain(param) && expected[index].at != nullptr) {
            const size_t size = param.shape == Shape::kPortsWord ? calls::kPortsWords * sizeof(uint32_t)
                                                                 : expected[index].count * param.element.size;
            EXPECT_EQ(std::memcmp(blocks[index].at, expected[index].at, size), 0) << call.name << " " << param.name;
        }
    }
}

TEST(JsonRoundTrip, GivesTheArgumentsOfEveryCallBack) {
    for_random_calls([](const Named &call, const RandomCall &random, uint64_t) {
        const Blocks blocks = blocks_of(call.params, random.arguments());
        const std::string text = arguments_text(call.params, blocks);
        const Memory memory(call.params, json::parse(text));
        EXPECT_EQ(arguments_text(call.params, memory.blocks()), text) << call.name;
        expect_equal_memory(call, memory.blocks(), blocks);
    });
}

TEST(JsonRoundTrip, GivesTheOutputsOfEveryCallBack) {
    for_random_calls([](const Named &call, const RandomCall &random, uint64_t seed) {
        const Blocks blocks = blocks_of(call.params, random.arguments());
        const Memory memory(call.params, json::parse(arguments_text(call.params, blocks)));
        std::vector<uint8_t> storage;
        const Blocks before = copies_of(call.params, blocks, storage);
        EXPECT_EQ(outputs_text(call.params, blocks, before), "{}") << call.name;
        random_call::write_outputs(call.params, random.arguments(), seed);
        const std::string outputs = outputs_text(call.params, blocks, before);

        std::vector<uint8_t> memory_storage;
        const Blocks memory_before = copies_of(call.params, memory.blocks(), memory_storage);
        store(call.params, memory.blocks(), json::parse(outputs));
        EXPECT_EQ(outputs_text(call.params, memory.blocks(), memory_before), outputs) << call.name;
        expect_equal_memory(call, memory.blocks(), blocks);
    });
}

/** Text with some characters exchanged for others of the format is refused, or memory whose text is read again. */
TEST(JsonRoundTrip, DamagedTextIsReadOrRefused) {
    constexpr std::string_view kCharacters = R"({}[]",:-0123456789ABCDEFnul\ )";
    constexpr uint32_t kMostChanges = 3;
    size_t read = 0;
    size_t refused = 0;
    for_random_calls([&](const Named &call, const RandomCall &random, uint64_t seed) {
        std::string text = arguments_text(call.params, blocks_of(call.params, random.arguments()));
        Random changes(seed);
        for (uint32_t count = 1 + changes.below(kMostChanges); count > 0; --count) {
            text[changes.below(static_cast<uint32_t>(text.size()))] =
                kCharacters[changes.below(static_cast<uint32_t>(kCharacters.size()))];
        }
        const json damaged = json::parse(text, nullptr, false);
        if (damaged.is_discarded()) {
            return;
        }
        try {
            const Memory memory(call.params, damaged);
            const std::string written = arguments_text(call.params, memory.blocks());
            const Memory again(call.params, json::parse(written));
            EXPECT_EQ(arguments_text(call.params, again.blocks()), written) << call.name << text;
            ++read;
        } catch (const calls::BadValue &) {
            ++refused;
        }
    });
    EXPECT_GT(read, 0U);
    EXPECT_GT(refused, 0U);
}

/** The number is that of these headers: a text that differs on another machine gives another one. */
TEST(JsonRoundTrip, TheTextIsTheSameOnEveryMachine) {
    constexpr uint64_t kBasis = 14695981039346656037U;
    constexpr uint64_t kPrime = 1099511628211U;
    uint64_t checksum = kBasis;
    for_random_calls([&](const Named &call, const RandomCall &random, uint64_t seed) {
        const Blocks blocks = blocks_of(call.params, random.arguments());
        std::string text = arguments_text(call.params, blocks);
        std::vector<uint8_t> storage;
        const Blocks before = copies_of(call.params, blocks, storage);
        random_call::write_outputs(call.params, random.arguments(), seed);
        text += outputs_text(call.params, blocks, before);
        for (const char character : text) {
            checksum = (checksum ^ static_cast<uint8_t>(character)) * kPrime;
        }
    });
    EXPECT_EQ(checksum, 16089628841523324748U) << "if the headers have changed, this is the new number";
}

}  // namespace json_round_trip_test
