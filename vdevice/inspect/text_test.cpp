// Lists as text.
#include "vdevice/inspect/text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"

namespace vdevice::inspect {
namespace text_test {

using nlohmann::json;

TEST(PortList, DrawsNeighboursTogetherAndKeepsTheCpuPortApart) {
    EXPECT_EQ(port_list(json::array()), "-");
    EXPECT_EQ(port_list({0, 1, 2, 3, 4, 9}), "cpu,1-4,9");
    EXPECT_EQ(port_list({7}), "7");
    EXPECT_EQ(port_list({3, 2, 1, 2}), "3,2,1-2") << "in the list's own order";
}

TEST(Text, JoinsParts) {
    EXPECT_EQ(joined({}, ", "), "");
    EXPECT_EQ(joined({"a"}, ", "), "a");
    EXPECT_EQ(joined({"", "a", "b"}, ", "), ", a, b");
    EXPECT_EQ(numbers({1, 18446744073709551615U, -3}), "1 18446744073709551615 -3");
}

}  // namespace text_test
}  // namespace vdevice::inspect
