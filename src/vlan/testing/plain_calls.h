// For tests: calls that make one driver call, cut some of their arguments, and return the driver's result.
#pragma once

#include <functional>
#include <string>

#include "tests/support/library_test.h"

namespace vlan_test {

struct PlainCall {
    const char *name;
    std::function<adp_status_t()> call;
    const char *driver_call;
};

inline void PrintTo(const PlainCall &call, std::ostream *out) {
    *out << call.name;
}

inline std::string name_of(const ::testing::TestParamInfo<PlainCall> &test) {
    return test.param.name;
}

class PlainVlanCall : public library_test::LibraryTest, public ::testing::WithParamInterface<PlainCall> {
  protected:
    static void makes_its_driver_call_and_returns_the_result_unchanged() {
        const std::string before = library_test::table_bytes();
        for (const int32_t result : {0, 1, -1, 102, -12345}) {
            driver().reset();
            const std::string text = GetParam().driver_call;
            driver().on(text.substr(0, text.find('('))).returns(result);
            EXPECT_EQ(GetParam().call(), result);
            EXPECT_THAT(driver().trace(), ::testing::ElementsAre(text));
        }
        EXPECT_EQ(library_test::table_bytes(), before);
    }
};

}  // namespace vlan_test
