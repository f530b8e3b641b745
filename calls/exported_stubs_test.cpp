// Every stub of an exported call: it hands on all arguments, and gives the result back as its type says.
#include <gtest/gtest.h>

#include <string>

#include "calls/exported.h"
#include "calls/json_text.h"
#include "calls/stub.h"
#include "tests/support/random_call.h"

namespace exported_stubs_test {

/** What forward_call() got and gives. */
struct Forwarded {
    size_t index = SIZE_MAX;
    std::string arguments;
    int64_t result = 0;
};

Forwarded forwarded;

std::string arguments_text(const exported::Call &call, const void *const *arguments) {
    std::string text;
    append_arguments(text, call.params, blocks_of(call.params, arguments));
    return text;
}

/** A result of the call's type; an address is never used. */
int64_t result_for(const exported::Call &call, random_call::Random &random) {
    static int64_t memory = 0;
    switch (call.result) {
        case calls::Result::kNothing:
            return 0;
        case calls::Result::kText:
        case calls::Result::kStruct:
            return static_cast<int64_t>(reinterpret_cast<intptr_t>(&memory));
        case calls::Result::kU32:
        case calls::Result::kInterface:
            return random.next();
        default:
            return static_cast<int32_t>(random.next());
    }
}

TEST(ExportedStubs, HandOnEveryArgumentOfEveryCall) {
    constexpr uint64_t kRounds = 4;
    ASSERT_FALSE(exported::calls().empty());
    for (size_t index = 0; index < exported::calls().size(); ++index) {
        const exported::Call &call = exported::calls()[index];
        ASSERT_NE(call.function, nullptr) << call.name;
        for (uint64_t round = 0; round < kRounds; ++round) {
            random_call::Random random(index * kRounds + round);
            const random_call::RandomCall arguments(call.params, random);
            forwarded = {SIZE_MAX, "", result_for(call, random)};
            EXPECT_EQ(call.invoker(call.function, arguments.arguments()), forwarded.result) << call.name;
            EXPECT_EQ(forwarded.index, index) << call.name;
            EXPECT_EQ(forwarded.arguments, arguments_text(call, arguments.arguments())) << call.name;
        }
    }
}

}  // namespace exported_stubs_test

int64_t exported::forward_call(size_t index, const void *const *arguments) {
    using exported_stubs_test::forwarded;
    forwarded.index = index;
    forwarded.arguments = exported_stubs_test::arguments_text(calls()[index], arguments);
    return forwarded.result;
}
