/**
 * @file outcome.h
 * The result and the output of a call, both streams in full: trailing blanks and newlines count too.
 *
 *     EXPECT_EQ(outcome_of(adp_stg_init), (Outcome{-1, "", "adp_stg_init 251: ... failed!\n"}));
 */
#pragma once

#include <gtest/gtest.h>

#include <stdint.h>
#include <ostream>
#include <string>

namespace library_test {

struct Outcome {
    int32_t result = 0;
    std::string out; /**< on standard output */
    std::string err; /**< on standard error */

    bool operator==(const Outcome &) const = default;
};

inline void PrintTo(const Outcome &outcome, std::ostream *stream) {
    *stream << outcome.result << ", out " << ::testing::PrintToString(outcome.out) << ", err "
            << ::testing::PrintToString(outcome.err);
}

template <typename Call>
Outcome outcome_of(Call call) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    Outcome outcome;
    outcome.result = call();
    outcome.out = ::testing::internal::GetCapturedStdout();
    outcome.err = ::testing::internal::GetCapturedStderr();
    return outcome;
}

}  // namespace library_test
