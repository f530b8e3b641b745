// The frozen recordings of each version are still what the calls of this build can be made from again.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "calls/json_memory.h"
#include "tools/adptrace/recording/known_calls.h"
#include "tools/adptrace/recording/recording.h"

namespace samples_test {
namespace {

using adptrace::Call;
using adptrace::Recording;

/** Whether the values of a call fit the types of its header. */
void expect_values(const Call &call, std::span<const calls::Param> params) {
    SCOPED_TRACE(std::string(call.name) + " of line " + std::to_string(call.line));
    try {
        const calls::Memory memory(params, arguments_of(call));
        store(params, memory.blocks(), outputs_of(call));
    } catch (const calls::BadValue &error) {
        ADD_FAILURE() << error.what();
    }
}

TEST(Samples, HaveValuesOfTheirTypes) {
    size_t known = 0;
    size_t unknown = 0;
    for (const auto &entry : std::filesystem::directory_iterator(ADPTRACE_SAMPLES)) {
        if (entry.path().extension() != ".adptrace") {
            continue;
        }
        const Recording recording = Recording::of_file(entry.path());
        for (const Call &call : recording.calls()) {
            if (const adptrace::KnownCall *const header = adptrace::known_call(call.name)) {
                expect_values(call, header->params);
                ++known;
            } else {
                ++unknown;
            }
        }
    }
    EXPECT_GT(known, 50U);
    EXPECT_EQ(unknown, 1U) << "the one of a later version";
}

}  // namespace
}  // namespace samples_test
