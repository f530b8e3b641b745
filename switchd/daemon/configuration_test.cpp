// Configuration files: what they set, and how their mistakes are told.
#include "switchd/daemon/configuration.h"

#include <adp/agg.h>
#include <gtest/gtest.h>

#include <fstream>
#include <utility>

#include "tests/support/temporary_folder.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace configuration_test {

class ConfigurationFile : public testing::Test {
  protected:
    Configuration read(const std::string &text) {
        std::ofstream(path()) << text;
        return read_configuration(path());
    }
    ConfigurationAgain read_again(const std::string &text, const Configuration &running) {
        std::ofstream(path()) << text;
        return read_configuration_again(path(), running);
    }
    /** What is wrong with the file, without its folder. */
    std::string fault(const std::string &text) {
        try {
            read(text);
            return "";
        } catch (const vdevice::io::Error &error) {
            const std::string what = error.what();
            const size_t folder = what.find(folder_.path() + "/");
            return folder == std::string::npos ? what : std::string{what}.erase(folder, folder_.path().size() + 1);
        }
    }
    [[nodiscard]] std::string path() const { return folder_.path() + "/switchd.toml"; }

  private:
    TemporaryFolder folder_;
};

constexpr const char *kWhole = R"(
run_dir = "/tmp/elsewhere"
cpu_interface = "cpu"
user_ports = 4
physical_ports = [9, 7, 5, 3]
cpu_physical_port = 1
first_internal_vid = 3000
mac = "02:00:00:00:00:10"
interfaces_kind = "veth"
interfaces = ["swp3.100", "agg2.200"]
flood_limit = 500
learned_seconds = 5
log_level = "info"

[bridges]
guests = 300

[groups.agg2]
members = ["swp3", "swp4"]
mode = "lacp"
active = false
rate = "fast"
balance = "ip"
minimum_links = 2

[groups.agg1]
members = ["swp2"]
mode = "static"

[ports.swp1]
dot1x = "stations"
mtu = 1400

[ports.swp3]
priority = 7
)";

TEST_F(ConfigurationFile, SetsWhatItSays) {
    const Configuration configuration = read(kWhole);
    EXPECT_EQ(configuration.run_dir, "/tmp/elsewhere");
    EXPECT_EQ(configuration.cpu_interface, "cpu");
    EXPECT_EQ(configuration.user_ports, 4U);
    EXPECT_EQ(configuration.physical_ports, (std::vector<uint32_t>{9, 7, 5, 3}));
    EXPECT_EQ(configuration.cpu_physical_port, 1U);
    EXPECT_EQ(configuration.mac, (Mac{2, 0, 0, 0, 0, 0x10}));
    EXPECT_EQ(configuration.interfaces_kind, InterfaceKind::kVeth);
    EXPECT_EQ(configuration.interfaces, (std::vector<PortName>{{3, 100}, {ADP_AGG_INTF(2), 200}}));
    EXPECT_EQ(configuration.flood_limit, 500U);
    EXPECT_EQ(configuration.learned_seconds, 5U);
    EXPECT_EQ(configuration.log_level, vdevice::LogLevel::kInfo);
    EXPECT_EQ(configuration.bridges, (std::map<std::string, uint16_t>{{"guests", 300}}));
    ASSERT_EQ(configuration.groups.size(), 2U);
    const GroupSettings &group = configuration.groups.at(2);
    EXPECT_EQ(group.members, (std::map<uint32_t, uint16_t>{{3, 7}, {4, Configuration::kDefaultPriority}}));
    EXPECT_TRUE(group.mode == GroupMode::kLacp && !group.is_active && group.is_fast);
    EXPECT_EQ(group.balance, uint32_t{ADP_BALANCE_SRC_DST_IP});
    EXPECT_EQ(group.minimum_links, 2U);
    EXPECT_EQ(configuration.groups.at(1).mode, GroupMode::kStatic);
    EXPECT_EQ(configuration.port(1).dot1x, Dot1xControl::kStations);
    EXPECT_EQ(configuration.port(1).mtu, 1400U);
    EXPECT_EQ(configuration.port(2), Configuration::Port{});
}

TEST_F(ConfigurationFile, MayBeEmptyOrMissing) {
    const Configuration empty = read("# nothing\n");
    EXPECT_EQ(empty, read_configuration(""));
    EXPECT_EQ(empty.user_ports, 26U);
    EXPECT_EQ(empty.physical_ports.front(), 4U);
    EXPECT_EQ(empty.physical_ports.back(), 29U);
    EXPECT_EQ(empty.port(5).dot1x, Dot1xControl::kNone);
    GroupSettings group = read("[groups.agg8]\nmembers = [\"swp1\"]\n").groups.at(8);
    EXPECT_EQ(std::exchange(group.members, {}), (std::map<uint32_t, uint16_t>{{1, Configuration::kDefaultPriority}}));
    EXPECT_EQ(group, GroupSettings{});
}

TEST_F(ConfigurationFile, HasInternalVlans) {
    const Configuration configuration = read("first_internal_vid = 3000\n");
    EXPECT_TRUE(configuration.is_internal(3000) && configuration.is_internal(4094));
    EXPECT_FALSE(configuration.is_internal(2999));
}

TEST_F(ConfigurationFile, ReadAgainKeepsWhatCannotChange) {
    const Configuration running = read("user_ports = 4\nflood_limit = 1\n");
    const auto [changed, kept] = read_again("user_ports = 5\ncpu_interface = \"x\"\nflood_limit = 2\n", running);
    EXPECT_EQ(kept, (std::vector<std::string>{"cpu_interface", "user_ports", "physical_ports"}));
    EXPECT_EQ(changed.flood_limit, 2U);
    EXPECT_EQ(changed.user_ports, 4U);
    EXPECT_EQ(changed.physical_ports, running.physical_ports);
    EXPECT_TRUE(read_again("user_ports = 4\n", running).kept.empty());
    EXPECT_THROW(read_again("user_ports = 5\n[ports.swp5]\nmtu = 1400\n", running), vdevice::io::Error)
        << "the rest of the file fits the daemon that runs";
}

struct Fault {
    const char *text;
    const char *told;
};

constexpr Fault kFaults[] = {
    {"run_dri = \"/x\"\n", ":1: there is no key 'run_dri', did you mean 'run_dir'?"},
    {"user_ports = 27\n", ":1: user_ports 27 is not in 1 to 26."},
    {"physical_ports = 4\n", ":1: physical_ports must be a list in brackets."},
    {"physical_ports = [4, 256]\n", ":1: a physical port 256 is not in 0 to 255."},
    {"user_ports = 2\nphysical_ports = [4]\n",
     ": each of the 2 user ports, and the CPU port, needs a physical port of its own, from 0 to 255."},
    {"user_ports = 2\nphysical_ports = [4, 4]\n",
     ": each of the 2 user ports, and the CPU port, needs a physical port of its own, from 0 to 255."},
    {"first_physical_port = 231\n",
     ": each of the 26 user ports, and the CPU port, needs a physical port of its own, from 0 to 255."},
    {"cpu_interface = \"a b\"\n", ":1: an interface has a name of 1 to 15 letters without blanks, '/' and ':'."},
    {"cpu_interface = \"\"\n", ":1: an interface has a name of 1 to 15 letters without blanks, '/' and ':'."},
    {"first_internal_vid = 4090\n", ":1: first_internal_vid 4090 is not in 2 to 4060."},
    {"mac = \"01:00:00:00:00:01\"\n", ":1: mac must be the address of one interface, as \"02:00:00:00:00:01\"."},
    {"interfaces_kind = \"tun\"\n", ":1: interfaces_kind must be one of \"auto\", \"tap\", \"veth\"."},
    {"learned_seconds = 0\n", ":1: learned_seconds 0 is not in 1 to 3600."},
    {"log_level = \"loud\"\n", ":1: log_level must be error, warning, notice or info."},
    {"interfaces = [\"swp1\"]\n", ":1: 'swp1' is there anyway; these are for frames with a tag, as swp1.100."},
    {"interfaces = [\"swp1.100\",\n\"eth7\"]\n",
     ":2: 'eth7' is no interface of the switch; these are swp1, agg1, or swp1.100 with a tag."},
    {"interfaces = [\"swp1.100\", \"swp1.100\"]\n", ":1: 'swp1.100' is there twice."},
    {"interfaces = [\"swp1.4000\"]\n", ":1: VLAN 4000 is internal; these begin at first_internal_vid, 4000."},
    {"interfaces = [\"agg1.100\"]\n", ":1: 'agg1.100' is of a group that is not in [groups]."},
    {"interfaces = [1]\n", ":1: an interface must be a text in quotes."},
    {"user_ports = 4\ninterfaces = [\"swp5.100\"]\n", ":2: there is no 'swp5.100': the user ports are 1 to 4."},
    {"bridges = 1\n", ":1: bridges is a table: [bridges]."},
    {"[bridges]\na = 4095\n", ":2: VLAN 4095 is not in 1 to 4094."},
    {"[bridges]\na = 4001\n", ":2: VLAN 4001 is internal; these begin at first_internal_vid, 4000."},
    {"[bridges]\na = 10\nb = 10\n", ":3: VLAN 10 is another bridge's."},
    {"[bridges]\n\"a b\" = 10\n", ":2: an interface has a name of 1 to 15 letters without blanks, '/' and ':'."},
    {"[groups]\nagg1 = 1\n", ":2: groups.agg1 is a table: [groups.agg1]."},
    {"[groups.agg9]\n", ":1: 'agg9' is no interface of the switch; these are swp1, agg1, or swp1.100 with a tag."},
    {"[groups.swp1]\n", ":1: 'swp1' is no group; these are agg1 to agg8."},
    {"[groups.agg1]\nmember = []\n", ":2: there is no key 'member', did you mean 'members'?"},
    {"[groups.agg1]\nmembers = [\"agg2\"]\n", ":2: 'agg2' is a group, and no member of one."},
    {"[groups.agg1]\nmembers = [\"swp1\", \"swp1\"]\n", ":2: 'swp1' is in a group already."},
    {"[groups.agg1]\nmembers = [\"swp1\"]\n[groups.agg2]\nmembers = [\"swp1\"]\n", ":4: 'swp1' is in a group already."},
    {"[groups.agg1]\nmembers = [\"swp1.5\"]\n", ":2: 'swp1.5' has a tag: these settings are for all of 'swp1'."},
    {"[groups.agg1]\nmembers = [\"swp1\"]\nminimum_links = 2\n", ":1: the group has fewer members than minimum_links."},
    {"[groups.agg1]\nmode = \"lacp\"\n", ":1: a group needs its 'members'."},
    {"[groups.agg1]\nmembers = 3\n", ":2: members must be a list in brackets."},
    {"[groups.agg1]\nmode = \"on\"\n", ":2: mode must be one of \"static\", \"lacp\"."},
    {"[ports.swp1]\ndot1x = true\n", ":2: dot1x must be a text in quotes."},
    {"[ports.swp1]\nmtu = 67\n", ":2: mtu 67 is not in 68 to 9000."},
    {"[ports.swp1]\npriority = 7\n", ":1: priority is LACP's, for members of groups."},
    {"[ports.agg1]\ndot1x = \"port\"\n", ":1: 802.1X is for user ports outside groups."},
    {"[groups.agg1]\nmembers = [\"swp1\"]\n[ports.swp1]\ndot1x = \"port\"\n",
     ":3: 802.1X is for user ports outside groups."},
    {"[ports.\"swp1.5\"]\nmtu = 1400\n", ":1: 'swp1.5' has a tag: these settings are for all of 'swp1'."},
    {"[ports.\"\\u001b[2J\"]\n",
     ":1: '\\x1b[2J' is no interface of the switch; these are swp1, agg1, or swp1.100 with a tag."},
};

TEST_F(ConfigurationFile, TellsMistakesWithTheirLine) {
    for (const Fault &wrong : kFaults) {
        EXPECT_EQ(fault(wrong.text), std::string{"switchd.toml"} + wrong.told) << wrong.text;
    }
}

TEST_F(ConfigurationFile, WithMistakesOfTomlIsRefused) {
    for (const char *text : {"a = \n", "user_ports = 1\nuser_ports = 2\n", "\xff\x1b"}) {
        EXPECT_EQ(fault(text).rfind("switchd.toml:", 0), 0U) << text;
    }
    EXPECT_THROW(read_configuration(path() + ".none"), vdevice::io::Error);
    EXPECT_THROW(read_configuration("/dev/zero"), vdevice::io::Error);
}

TEST_F(ConfigurationFile, OfTheExampleHasTheDefaults) {
    Configuration example = read_configuration(SWITCHD_EXAMPLE);
    EXPECT_EQ(example.port(5).dot1x, Dot1xControl::kPort);
    EXPECT_EQ(example.log_level, vdevice::LogLevel::kNotice);
    const Configuration defaults = read_configuration("");
    EXPECT_TRUE(keep_fixed(example, defaults).empty());
    EXPECT_EQ(example.flood_limit, defaults.flood_limit);
    EXPECT_EQ(example.learned_seconds, defaults.learned_seconds);
    GroupSettings group;
    group.members = {{3, Configuration::kDefaultPriority}, {4, Configuration::kDefaultPriority}};
    group.is_fast = true;
    EXPECT_EQ(example.groups, (std::map<uint32_t, GroupSettings>{{1, group}}));
}

}  // namespace configuration_test
}  // namespace switchd
