// Every call of the table as a message: what was encoded is decoded alike, and nothing else is accepted.
#include "vdevice/remote/message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <vector>

#include "calls/describe.h"
#include "tests/support/random_call.h"

namespace vdevice::remote {
namespace message_test {

using calls::CallId;
using calls::describe_call;
using calls::describe_result;
using random_call::Random;
using random_call::RandomCall;
using random_call::write_outputs;

constexpr uint64_t kRounds = 8;

/** Runs a check for every call of the table, several times each. */
template <typename Check>
void for_every_call(Check check) {
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        SCOPED_TRACE(calls::calls()[number].name);
        for (uint64_t round = 0; round < kRounds; ++round) {
            check(static_cast<CallId>(number), number * kRounds + round);
        }
        if (testing::Test::HasFailure()) {
            return;  // the failures of one call are enough
        }
    }
}

std::vector<uint8_t> inputs(CallId id, const RandomCall &call) {
    Writer writer;
    EXPECT_TRUE(encode_inputs(writer, id, call.arguments()));
    EXPECT_EQ(writer.buffer().size() % kWordBytes, 0u);
    return writer.take();
}

TEST(Message, CarriesTheInputsOfEveryCallUnchanged) {
    for_every_call([](CallId id, uint64_t seed) {
        const RandomCall sent(id, seed);
        const auto message = inputs(id, sent);
        Reader reader(message);
        Received received;
        ASSERT_TRUE(received.decode(reader, id));
        EXPECT_EQ(describe_call(id, received.arguments()), describe_call(id, sent.arguments()));
    });
}

TEST(Message, CarriesTheOutputsOfEveryCallUnchanged) {
    for_every_call([](CallId id, uint64_t seed) {
        const RandomCall sent(id, seed);
        const auto message = inputs(id, sent);
        Reader reader(message);
        Received received;
        ASSERT_TRUE(received.decode(reader, id));
        write_outputs(id, received.arguments(), seed + 1);
        Writer writer;
        encode_outputs(writer, id, received.arguments());
        Reader reply(writer.buffer());
        ASSERT_TRUE(decode_outputs(reply, id, sent.arguments()));
        EXPECT_EQ(describe_result(id, sent.arguments(), 0), describe_result(id, received.arguments(), 0));
    });
}

TEST(Message, IsRefusedWhenItIsShorterOrLongerThanTheCall) {
    for_every_call([](CallId id, uint64_t seed) {
        auto message = inputs(id, RandomCall(id, seed));
        const std::span whole(message);
        for (size_t size = 0; size < message.size(); size += kWordBytes) {
            Reader reader(whole.first(size));
            EXPECT_FALSE(Received().decode(reader, id)) << size << " of " << message.size() << " bytes";
        }
        message.resize(message.size() + kWordBytes);
        Reader reader(message);
        EXPECT_FALSE(Received().decode(reader, id));
    });
}

TEST(Message, StoresNothingOfAReplyThatDoesNotFit) {
    for_every_call([](CallId id, uint64_t seed) {
        const RandomCall answered(id, seed);
        write_outputs(id, answered.arguments(), seed + 1);
        Writer writer;
        encode_outputs(writer, id, answered.arguments());
        const size_t fitting = writer.buffer().size();
        writer.word(0xFFFFFFFF);
        for (const size_t size : {fitting - std::min(fitting, kWordBytes), fitting + kWordBytes}) {
            const RandomCall sent(id, seed);
            const RandomCall same(id, seed);
            Reader reader(std::span<const uint8_t>(writer.buffer()).first(size));
            EXPECT_EQ(decode_outputs(reader, id, sent.arguments()), size == fitting);
            if (size != fitting) {
                EXPECT_EQ(describe_result(id, sent.arguments(), 0), describe_result(id, same.arguments(), 0));
            }
        }
    });
}

// Random words instead of a message: each is read to the end or refused, without a finding of the sanitizers.
TEST(Message, SurvivesGarbage) {
    size_t accepted = 0;
    for_every_call([&](CallId id, uint64_t seed) {
        constexpr uint32_t kLongest = 300;
        constexpr uint32_t kWildOneIn = 4;
        Random random(seed);
        std::vector<uint8_t> garbage(random.below(kLongest));
        for (auto &byte : garbage) {
            // Many small numbers, as presence words and lengths are.
            byte = static_cast<uint8_t>(random.below(kWildOneIn) == 0 ? random.next() : random.below(2));
        }
        Reader reader(garbage);
        Received received;
        if (received.decode(reader, id)) {
            ++accepted;
            EXPECT_FALSE(describe_call(id, received.arguments()).empty());
        }
    });
    EXPECT_LT(accepted, calls::kCallCount) << "hardly any garbage has the length of its call";
}

TEST(MessageBytes, AreBigEndianWords) {
    const uint32_t unit = 0x01020304;
    const uint32_t zero = 0;
    const int32_t port = -2;
    const uint32_t enable = 1;
    const void *const arguments[] = {&unit, &zero, &port, &enable};
    Writer writer;
    ASSERT_TRUE(encode_inputs(writer, CallId::user_port_enable_set, arguments));
    EXPECT_EQ(writer.buffer(), (std::vector<uint8_t>{1, 2, 3, 4, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFE, 0, 0, 0, 1}));
}

TEST(MessageBytes, PackBytesAndKeepTheirOrder) {
    const char *mac = "ab";
    const uint32_t intf = 1;
    const void *const arguments[] = {&mac, &intf, &intf, &intf};
    Writer writer;
    ASSERT_TRUE(encode_inputs(writer, CallId::add_mac_static_addr, arguments));
    EXPECT_EQ(writer.buffer(), (std::vector<uint8_t>{0, 0, 0, 1, 0,   0,   0, 1, 0, 0, 0, 1,  // values first
                                                     0, 0, 0, 3, 'a', 'b', 0, 0}));
}

TEST(MessageBytes, CutWordsTo32Bits) {
    const auto queue = static_cast<uintptr_t>(0xFFFFFFFF00000005 & UINTPTR_MAX);
    const uintptr_t *message = nullptr;
    const int32_t timeout = 0;
    const void *const arguments[] = {&queue, &message, &timeout};
    Writer writer;
    ASSERT_TRUE(encode_inputs(writer, CallId::equeue_send_ucast, arguments));
    EXPECT_EQ(writer.buffer(), (std::vector<uint8_t>{0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(MessageBytes, AreNotWrittenForMoreThanAMessageHolds) {
    for (size_t number = 0; number < calls::kCallCount; ++number) {
        const auto id = static_cast<CallId>(number);
        const auto &params = calls::call(id).params;
        for (const auto &param : params) {
            if (param.counted_by == calls::kNotCounted) {
                continue;
            }
            const RandomCall call(id, 1);
            std::vector<const void *> arguments(call.arguments(), call.arguments() + params.size());
            const int32_t many = INT32_MAX;
            arguments[static_cast<size_t>(param.counted_by)] = &many;
            const uint32_t target = 0;
            const void *address = &target;
            arguments[static_cast<size_t>(&param - params.data())] = &address;
            Writer writer;
            EXPECT_FALSE(encode_inputs(writer, id, arguments.data())) << calls::call(id).name;
            return;
        }
    }
    FAIL() << "no call counts a block by a parameter";
}

}  // namespace message_test

}  // namespace vdevice::remote
