// Lists as text.
#include "vdevice/inspect/text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

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

TEST(Log, KeepsTextsOnTheirLineAndFromTheTerminal) {
    const json line = {
        {"time", 1.5}, {"level", 5}, {"module", 2}, {"word", "A\x1b[2J"}, {"text", "a\n  1.0  5/0 PORT b\xFF"}};
    EXPECT_EQ(find("log")->show({{"log", json::array({line})}}),
              "    1.500000  5/2 A\\x1b[2J a\\n  1.0  5/0 PORT b\\xff\n");
}

TEST(Metrics, AreShownWithEscapedLabels) {
    const json family = {
        {"name", "adp_x_total"},
        {"type", "counter"},
        {"help", "Something."},
        {"samples",
         {{{"labels", {{"a", "1\\\"\n"}, {"b", "c"}}}, {"value", 3}}, {{"labels", json::object()}, {"value", 0.5}}}}};
    EXPECT_EQ(find("metrics")->show({{"metrics", json::array({family})}}),
              "# HELP adp_x_total Something.\n# TYPE adp_x_total counter\n"
              "adp_x_total{a=\"1\\\\\\\"\\n\",b=\"c\"} 3\nadp_x_total 0.5\n");
}

}  // namespace text_test
}  // namespace vdevice::inspect
