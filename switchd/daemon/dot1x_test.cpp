// 802.1X control of ports: what the switch is told, and who counts as let in.
#include "switchd/daemon/dot1x.h"

#include <adp/port.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/recording_driver.h"
#include "tests/support/temporary_folder.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace dot1x_test {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kPort = 5;
constexpr Mac kStation{2, 0, 0, 0, 0, 1};
constexpr Mac kOther{2, 0, 0, 0, 0, 2};
constexpr int32_t kRefused = -3;

const char *const kClosed = "user_port_learn_set(unit=0, zero=0, port=8, mode=0)";
const char *const kFlushed = "set_mac_tbl_clear_by_port(intf=5, scope=7, kind=3)";
const char *const kOpened = "user_port_learn_set(unit=0, zero=0, port=8, mode=5)";

void make_map() {
    static const bool is_made = [] {
        constexpr uint32_t kFirstPort = 4;
        adp_set_max_phy_port_num(ADP_USER_PORTS);
        for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
            adp_add_phy_port(port, 0, 0, kFirstPort + port - 1, 0);
        }
        return true;
    }();
    ASSERT_TRUE(is_made);
}

class Dot1xPorts : public testing::Test {
  protected:
    void SetUp() override {
        make_map();
        driver().reset();
        driver().on("user_mac_addr_get").returns(kRefused);
    }
    static recording::Driver &driver() { return recording::driver(); }
    /** The calls since the last time that change something. */
    static std::vector<std::string> changes() {
        std::vector<std::string> lines = driver().take();
        std::erase_if(lines, [](const std::string &line) {
            return line.rfind("user_mac_addr_get", 0) == 0 || line.rfind("onu_mac2str", 0) == 0 ||
                   line.rfind("get_group_by_interface", 0) == 0;
        });
        return lines;
    }
    std::string refusal(const std::function<void()> &step) {
        try {
            step();
            return "";
        } catch (const vdevice::io::Error &error) {
            return error.what();
        }
    }
    [[nodiscard]] std::string file() const { return folder_.path() + "/dot1x"; }

    Dot1x dot1x_{""};

  private:
    TemporaryFolder folder_;
};

TEST_F(Dot1xPorts, AreClosedAtTheStartAndOpenedByPort) {
    EXPECT_THAT(dot1x_.configure({{kPort, Dot1xControl::kPort}, {6, Dot1xControl::kNone}}), IsEmpty());
    EXPECT_THAT(changes(), ElementsAre(kClosed, kFlushed));
    EXPECT_TRUE(dot1x_.is_closed(kPort));
    EXPECT_FALSE(dot1x_.is_closed(6));
    EXPECT_EQ(dot1x_.authorize(kPort, std::nullopt), "swp5 is open.");
    EXPECT_THAT(changes(), ElementsAre(kOpened));
    EXPECT_FALSE(dot1x_.is_closed(kPort));
    EXPECT_EQ(dot1x_.unauthorize(kPort, std::nullopt), "swp5 is closed.");
    EXPECT_THAT(changes(), ElementsAre(kClosed, kFlushed));
}

TEST_F(Dot1xPorts, StayOpenUntilTheLastStationLeaves) {
    dot1x_.configure({{kPort, Dot1xControl::kPort}});
    changes();
    EXPECT_EQ(dot1x_.authorize(kPort, kStation), "02:00:00:00:00:01 is let in on swp5.");
    dot1x_.authorize(kPort, kOther);
    dot1x_.authorize(kPort, kOther);
    EXPECT_THAT(changes(), ElementsAre(kOpened));
    EXPECT_EQ(dot1x_.unauthorize(kPort, kStation), "02:00:00:00:00:01 is no longer let in on swp5.");
    EXPECT_EQ(dot1x_.unauthorize(kPort, kStation), "02:00:00:00:00:01 was not let in on swp5.");
    EXPECT_THAT(changes(), IsEmpty());
    dot1x_.unauthorize(kPort, kOther);
    EXPECT_THAT(changes(), ElementsAre(kClosed, kFlushed));
}

TEST_F(Dot1xPorts, LetSingleStationsInInTheirVlan) {
    dot1x_.configure({{kPort, Dot1xControl::kStations}});
    changes();
    dot1x_.authorize(kPort, kStation);
    EXPECT_THAT(changes(), IsEmpty()) << "until the VLAN is known";
    EXPECT_THAT(dot1x_.set_vlan(kPort, 100), IsEmpty());
    const char *const added = "add_mac_static_addr(mac=\"02:00:00:00:00:01\", intf=5, vid=100, flag=1)";
    const char *const removed = "del_mac_addr(mac=\"02:00:00:00:00:01\", vid=100, flag=1)";
    EXPECT_THAT(changes(), ElementsAre(removed, added));
    EXPECT_TRUE(dot1x_.is_closed(kPort));
    EXPECT_THAT(dot1x_.stations(kPort), ElementsAre(kStation));
    EXPECT_THAT(dot1x_.stations(6), IsEmpty());
    EXPECT_TRUE(dot1x_.is_entry(100, kStation));
    EXPECT_FALSE(dot1x_.is_entry(101, kStation) || dot1x_.is_entry(100, kOther));
    dot1x_.set_vlan(kPort, 0);
    EXPECT_THAT(changes(), ElementsAre(removed));
    EXPECT_FALSE(dot1x_.is_entry(100, kStation));
    dot1x_.set_vlan(kPort, 100);
    changes();
    dot1x_.unauthorize(kPort, kStation);
    EXPECT_THAT(changes(), ElementsAre(removed));
    EXPECT_THAT(dot1x_.stations(kPort), IsEmpty());
    EXPECT_EQ(refusal([&] { dot1x_.authorize(kPort, std::nullopt); }),
              "swp5 lets in single stations: name the address of one.");
}

TEST_F(Dot1xPorts, LeaveAnEntryAloneThatIsThere) {
    dot1x_.configure({{kPort, Dot1xControl::kStations}});
    dot1x_.set_vlan(kPort, 100);
    changes();
    adp_l2_entry_t entry{};
    entry.flags = 0x8;
    entry.port = 8;
    driver().on("user_mac_addr_get").returns(0).sets_object("entry", entry);
    dot1x_.authorize(kPort, kStation);
    EXPECT_THAT(changes(), IsEmpty());
    EXPECT_TRUE(dot1x_.is_entry(100, kStation));
}

TEST_F(Dot1xPorts, CloseWhenTheCableIsPulled) {
    dot1x_.configure({{kPort, Dot1xControl::kPort}});
    EXPECT_THAT(dot1x_.link_went_down(kPort), IsEmpty());
    dot1x_.authorize(kPort, kStation);
    changes();
    dot1x_.link_went_down(kPort);
    EXPECT_THAT(changes(), ElementsAre(kClosed, kFlushed));
    dot1x_.link_went_down(kPort);
    dot1x_.link_went_down(6);
    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(Dot1xPorts, OpenWhenTheyAreNoLongerControlled) {
    dot1x_.configure({{kPort, Dot1xControl::kStations}});
    dot1x_.set_vlan(kPort, 100);
    dot1x_.authorize(kPort, kStation);
    changes();
    dot1x_.configure({});
    EXPECT_THAT(changes(), ElementsAre("del_mac_addr(mac=\"02:00:00:00:00:01\", vid=100, flag=1)", kOpened));
    EXPECT_EQ(dot1x_.status(kPort), json());
    dot1x_.configure({{kPort, Dot1xControl::kStations}});
    EXPECT_THAT(dot1x_.stations(kPort), IsEmpty()) << "a new control begins with nobody";
}

TEST_F(Dot1xPorts, AreRefusedWithASentence) {
    dot1x_.configure({{kPort, Dot1xControl::kPort}});
    EXPECT_EQ(refusal([&] { dot1x_.authorize(6, std::nullopt); }),
              "swp6 is not controlled by 802.1X: the configuration has no 'dot1x' in [ports.swp6].");
    EXPECT_EQ(refusal([&] {
                  dot1x_.authorize(kPort, Mac{0x33, 0x33});
              }),
              "33:33:00:00:00:00 is not the address of a station.");
    for (size_t count = 0; count < Dot1x::kMaxStations; ++count) {
        dot1x_.authorize(kPort, Mac{2, 0, 0, 0, 1, static_cast<uint8_t>(count)});
    }
    dot1x_.authorize(kPort, Mac{2, 0, 0, 0, 1, 0});
    EXPECT_EQ(refusal([&] { dot1x_.authorize(kPort, kStation); }), "there are 64 stations on swp5 already.");
}

TEST_F(Dot1xPorts, ThatTheSwitchRefusesAreNotDone) {
    driver().fail_every("user_port_learn_set", kRefused);
    EXPECT_EQ(dot1x_.configure({{kPort, Dot1xControl::kPort}}).size(), 1U);
    EXPECT_TRUE(dot1x_.is_closed(kPort)) << "for the switch's own stack at least";
    EXPECT_EQ(refusal([&] { dot1x_.authorize(kPort, kStation); }),
              "the switch refuses to open swp5: the port's learning mode could not be set (401).");
    EXPECT_TRUE(dot1x_.is_closed(kPort));
    EXPECT_THAT(dot1x_.stations(kPort), IsEmpty());
    driver().fail_nothing();
    changes();
    EXPECT_THAT(dot1x_.configure({{kPort, Dot1xControl::kPort}}), IsEmpty());
    EXPECT_THAT(changes(), ElementsAre(kClosed, kFlushed)) << "tried again";
    dot1x_.authorize(kPort, kStation);
    driver().fail_every("user_port_learn_set", kRefused);
    EXPECT_NE(refusal([&] { dot1x_.unauthorize(kPort, kStation); }), "");
    driver().fail_nothing();
    changes();
    dot1x_.unauthorize(kPort, std::nullopt);
    EXPECT_THAT(changes(), ElementsAre(kClosed, kFlushed));
}

TEST_F(Dot1xPorts, LetNobodyInWhoseEntryIsRefused) {
    dot1x_.configure({{kPort, Dot1xControl::kStations}});
    dot1x_.set_vlan(kPort, 100);
    driver().fail_every("add_mac_static_addr", kRefused);
    EXPECT_EQ(refusal([&] { dot1x_.authorize(kPort, kStation); }),
              "the switch refuses to let 02:00:00:00:00:01 in on swp5: the static entry could not be added (405).");
    EXPECT_THAT(dot1x_.stations(kPort), IsEmpty());
}

TEST_F(Dot1xPorts, OfAKilledDaemonStayAsTheyAre) {
    {
        Dot1x killed{file()};
        killed.configure({{kPort, Dot1xControl::kPort}, {6, Dot1xControl::kStations}, {7, Dot1xControl::kPort}});
        killed.authorize(kPort, kStation);
        killed.authorize(6, kOther);
        killed.authorize(7, std::nullopt);
        killed.unauthorize(7, std::nullopt);
    }
    changes();
    Dot1x next{file()};
    next.adopt();
    next.configure({{kPort, Dot1xControl::kPort}, {6, Dot1xControl::kStations}, {7, Dot1xControl::kPort}});
    EXPECT_FALSE(next.is_closed(kPort));
    EXPECT_THAT(next.stations(6), ElementsAre(kOther));
    EXPECT_TRUE(next.is_closed(7));
    for (const std::string &line : changes()) {
        EXPECT_EQ(line.find("port=8,"), std::string::npos) << "a port that is open is not touched: " << line;
    }
    Dot1x without{file()};
    without.adopt();
    without.configure({{6, Dot1xControl::kStations}});
    EXPECT_THAT(changes(), Contains(kOpened)) << "what is no longer controlled";
    Dot1x fresh{file()};
    fresh.configure({{kPort, Dot1xControl::kPort}});
    EXPECT_TRUE(fresh.is_closed(kPort)) << "after a start of the switch";
}

TEST_F(Dot1xPorts, AreClosedIfTheFileIsAnotherOne) {
    for (const char *text : {"", "[]", "7", "{\"swp5\": 7}", "{\"swp5\": {\"by_hand\": 1, \"stations\": []}}",
                             "{\"swp5\": {\"by_hand\": true}}", "{\"swp5.100\": {\"by_hand\": true, \"stations\": []}}",
                             "{\"swp5\": {\"by_hand\": false, \"stations\": [\"x\", \"ff:ff:ff:ff:ff:ff\"]}}",
                             "{\"swp5\": {\"by_hand\": false, \"stations\": [1]}}"}) {
        std::ofstream(file()) << text;
        Dot1x next{file()};
        next.adopt();
        next.configure({{kPort, Dot1xControl::kPort}});
        EXPECT_TRUE(next.is_closed(kPort)) << text;
    }
    Dot1x without{file() + "/nowhere/at/all"};
    without.adopt();
    without.configure({{kPort, Dot1xControl::kPort}});
    EXPECT_NO_THROW(without.authorize(kPort, kStation));
}

TEST_F(Dot1xPorts, HaveAStatus) {
    dot1x_.configure({{kPort, Dot1xControl::kPort}, {6, Dot1xControl::kStations}});
    dot1x_.authorize(6, kStation);
    EXPECT_EQ(dot1x_.status(kPort), json({{"control", "port"}, {"open", false}, {"stations", json::array()}}));
    EXPECT_EQ(dot1x_.status(6), json({{"control", "stations"}, {"open", false}, {"stations", {"02:00:00:00:00:01"}}}));
    EXPECT_EQ(dot1x_.status(7), json());
}

}  // namespace dot1x_test
}  // namespace switchd
