// Texts of answers, also of those that no daemon of this version gives.
#include "switchd/daemon/status_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "vdevice/io/error.h"

namespace switchd {
namespace status_text_test {

using nlohmann::json;

const char *const kStatus = R"({
    "state": {"synced": true, "since_ms": 12345, "resyncs": 1},
    "bridges": [{"name": "br100", "vid": 100, "stp": true, "snooping": false, "ports": [
        {"name": "swp1", "state": "forwarding", "tagged": false},
        {"name": "swp3.100", "state": "blocking", "tagged": true}]},
        {"name": "br200", "vid": 200, "stp": false, "snooping": true, "ports": []}],
    "ports": [{"name": "swp1", "up": true, "link": true, "speed": 1000, "duplex": "full", "bridge": "br100", "vid": 100,
               "dot1x": null, "rx_frames": 12, "tx_frames": 5},
              {"name": "swp5", "up": true, "link": false, "speed": 0, "duplex": null, "bridge": null, "vid": 4005,
               "dot1x": {"control": "port", "open": false, "stations": []}, "rx_frames": 0, "tx_frames": 0},
              {"name": "swp6", "up": true, "link": false, "speed": 0, "duplex": null, "bridge": null, "vid": 4006,
               "dot1x": {"control": "stations", "open": false, "stations": ["02:00:00:00:00:01"]}}],
    "groups": [{"name": "agg1", "mode": "lacp", "up": true, "partner": "02:00:00:00:00:99", "members": [
        {"name": "swp3", "state": "distributing", "actor": ["active", "fast"], "partner": {"key": 7, "port": 2}}]}],
    "not_in_hardware": [{"subject": "br300", "text": "VLAN 300 is another bridge's."}],
    "frames": {"received": 3, "sent": 4}})";

const char *const kText = R"(in sync with the kernel, for 12 s; read again 1 times

BRIDGE  VLAN  STP  SNOOPING  PORTS
br100   100   yes  no        swp1 swp3.100 (tagged) (blocking)
br200   200   no   yes       -

PORT  UP   LINK  MB/S  DUPLEX  BRIDGE  VLAN  RX FRAMES  TX FRAMES  802.1X
swp1  yes  yes   1000  full    br100   100   12         5          -
swp5  yes  no    0     -       -       4005  0          0          closed
swp6  yes  no    0     -       -       4006  -          -          let in: 02:00:00:00:00:01

GROUP  MODE  UP   PARTNER            MEMBER  STATE         ACTOR        PARTNER
agg1   lacp  yes  02:00:00:00:00:99
                                     swp3    distributing  active fast  key 7, port 2

FRAMES OF THE CPU  COUNT
RECEIVED           3
SENT               4

NOT IN HARDWARE  WHY
br300            VLAN 300 is another bridge's.
)";

TEST(StatusText, HasATableForEachSubject) {
    EXPECT_EQ(text_of_answer(json::parse(kStatus)), kText);
}

TEST(StatusText, OfOneSubjectIsThatTable) {
    const json status = json::parse(kStatus);
    EXPECT_EQ(text_of_answer(subject_of(status, "not_in_hardware")),
              "NOT IN HARDWARE  WHY\nbr300            VLAN 300 is another bridge's.\n");
    EXPECT_EQ(text_of_answer(json::parse(R"({"groups": []})")), "none\n");
    EXPECT_EQ(text_of_answer(json::parse(R"({"groups": [{"name": "agg1", "mode": "lacp", "fault": "no room."}]})")),
              "GROUP  MODE  UP  PARTNER  MEMBER  STATE  ACTOR  PARTNER\nagg1   lacp  -   -\nagg1: no room.\n");
}

TEST(StatusText, HasAllCountersOfOnePortAndSomeOfMany) {
    const char *const one = R"({"statistics": [{"name": "swp1", "rx_frames": 7}]})";
    EXPECT_EQ(text_of_answer(json::parse(one)), "COUNTER    VALUE\nNAME       swp1\nRX FRAMES  7\n");
    const char *const two = R"({"statistics": [{"name": "swp1", "rx_frames": 7}, {"name": "swp2", "tx_octets": 1}]})";
    EXPECT_EQ(text_of_answer(json::parse(two)),
              "PORT  RX FRAMES  RX OCTETS  RX DROPPED  TX FRAMES  TX OCTETS  TX TOO LONG\n"
              "swp1  7          -          -           -          -          -\n"
              "swp2  -          -          -           -          1          -\n");
}

TEST(StatusText, HasNothingThatATerminalObeys) {
    EXPECT_EQ(text_of_answer(json::parse(R"({"text": "swp5 is open.\u001b[2J"})")), "swp5 is open.\\x1b[2J\n");
    const std::string text = text_of_answer(json::parse(
        R"({"frames": {"\u001b[2J": "\u001b[2J"}, "ports": [{"name": "\u001b[2J", "vid": ["\u001b"], "up": {"\u001b": 1}}]})"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_NE(text.find("\\x1b[2J"), std::string::npos);
}

TEST(StatusText, LeavesOutWhatItDoesNotKnow) {
    const json status = json::parse(kStatus);
    for (const json &other : {json(), json(7), json("x"), json::array({1, json::array({json::object()})}),
                              json::object({{"synced", json::array()}, {"since_ms", "x"}})}) {
        for (const auto &[key, value] : status.items()) {
            json changed = status;
            changed[key] = other;
            EXPECT_NE(text_of_answer(changed), "") << changed;
            EXPECT_NO_THROW(text_of_answer(subject_of(changed, key))) << changed;
        }
    }
    EXPECT_EQ(text_of_answer(json::object()), "");
}

TEST(StatusText, IsOfSubjectsThatThereAre) {
    EXPECT_NO_THROW(check_subject({"status"}));
    EXPECT_NO_THROW(check_subject({"status", "groups"}));
    try {
        check_subject({"status", "goups"});
        FAIL();
    } catch (const vdevice::io::Error &error) {
        EXPECT_STREQ(error.what(), "there is no status of 'goups', did you mean 'groups'?");
    }
    EXPECT_THROW(check_subject({"status", "statistics"}), vdevice::io::Error);
    EXPECT_THROW(subject_of(json::object(), "goups"), vdevice::io::Error);
}

}  // namespace status_text_test
}  // namespace switchd
