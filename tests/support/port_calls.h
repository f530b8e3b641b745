/**
 * @file port_calls.h
 * Tests of every call that is one driver call on a user port. A test program names its calls:
 *
 *     const std::vector<PortCall> kShapers = {{"Set", [](uint32_t intf) { return ...; }, "user_...", ", rate=1"}};
 *     INSTANTIATE_TEST_SUITE_P(Shaper, OnUserPort, ValuesIn(kShapers), port_calls::name_of);
 *     INSTANTIATE_TEST_SUITE_P(Shaper, NotOnGroups, ValuesIn(kShapers), port_calls::name_of);
 *     INSTANTIATE_TEST_SUITE_P(Shaper, ReadOfUserPort, ValuesIn(port_calls::reads_of(kShapers)), port_calls::name_of);
 */
#pragma once

#include <functional>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/library_test.h"

namespace port_calls {

inline constexpr uint32_t kNotWritten = 0xAAAAAAAA;
inline constexpr int32_t kFailures[] = {-1, 1, 77, INT32_MIN};
inline constexpr uint32_t kOtherTypes[] = {0x20000001, 0x70000002, 0xFFFFFFFF};
/** Aggregation interfaces whose groups do not exist. */
inline constexpr uint32_t kBadGroups[] = {ADP_AGG_INTF(0), ADP_AGG_INTF(9), 0x1FFFFFFF};

/** Outputs of the calls under test; not written when a test begins. */
inline uint32_t outputs[2];

inline void forget_outputs() {
    std::fill(std::begin(outputs), std::end(outputs), kNotWritten);
}

inline testing::AssertionResult nothing_was_read() {
    const bool unwritten =
        std::all_of(std::begin(outputs), std::end(outputs), [](uint32_t output) { return output == kNotWritten; });
    return unwritten ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << "read: " << outputs[0] << ", " << outputs[1];
}

/** A call of the library and the driver call that it makes. */
struct PortCall {
    std::string name;
    std::function<adp_status_t(uint32_t intf)> run;
    std::string driver_call;
    std::string arguments;                /**< of the driver call, after the port */
    std::vector<std::string> written{};   /**< outputs of the driver call, which the call under test has in outputs */
    adp_status_t on_group = ADP_E_DRIVER; /**< answer for an aggregation interface */

    [[nodiscard]] std::string line(int port) const {
        return driver_call + "(unit=0, zero=0, port=" + std::to_string(port) + arguments + ")";
    }
};

inline void PrintTo(const PortCall &call, std::ostream *out) {
    *out << call.name;
}

inline std::string name_of(const testing::TestParamInfo<PortCall> &row) {
    return row.param.name;
}

inline std::vector<PortCall> reads_of(const std::vector<PortCall> &calls) {
    std::vector<PortCall> reads;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(reads),
                 [](const PortCall &call) { return !call.written.empty(); });
    return reads;
}

class PortCallTest : public library_test::LibraryTest, public testing::WithParamInterface<PortCall> {
  protected:
    void SetUp() override {
        LibraryTest::SetUp();
        forget_outputs();
    }
};

/** For every call: its driver call, its failures and the interface types it rejects. */
class OnUserPort : public PortCallTest {};

/** For calls with outputs. */
class ReadOfUserPort : public PortCallTest {};

/** For calls that do not fan out over a group. */
class NotOnGroups : public PortCallTest {};

}  // namespace port_calls
