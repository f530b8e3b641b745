// Configuration files: what they set, and how their mistakes are told.
#include "vdevice/daemon/configuration.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/support/temporary_folder.h"
#include "vdevice/driver/driver.h"
#include "vdevice/io/error.h"

namespace vdevice {
namespace configuration_test {

class NoPorts final : public chip::Sink {
    void transmit(int, const chip::Frame &) override {}
};

class ConfigurationFile : public testing::Test {
  protected:
    Configuration read(const std::string &text, const Settings &given = {}) {
        std::ofstream(path()) << text;
        return read_configuration(path(), given);
    }
    /** What is wrong with the file, without its folder. */
    std::string fault(const std::string &text, const Settings &given = {}) {
        try {
            read(text, given);
            return "";
        } catch (const io::Error &error) {
            const std::string what = error.what();
            const size_t folder = what.find(folder_.path() + "/");
            return folder == std::string::npos ? what : std::string{what}.erase(folder, folder_.path().size() + 1);
        }
    }
    [[nodiscard]] std::string path() const { return folder_.path() + "/vdeviced.toml"; }

    NoPorts sink_;
    chip::Switch chip_{sink_};
    driver::Driver driver_{chip_, driver::Board{}, [] { return chip::Time{}; }};

  private:
    TemporaryFolder folder_;
};

constexpr const char *kWhole = R"(
run-dir = "/run/vdevice"
port-interfaces = "lan"
log-level = "notice"
create-interfaces = true
user-ports = 8
first-port = 4
ageing-time = 60

[[port]]
ports = 1
interface = "lan1"
pvid = 10

[[port]]
ports = "2-3,8"
enabled = false
speed = 100
duplex = "half"
spanning-tree = "blocking"

[[vlan]]
vid = 10
members = "cpu,1-4"
untagged = "1-2"
)";

TEST_F(ConfigurationFile, SetsWhatItSays) {
    const Configuration configuration = read(kWhole);
    EXPECT_EQ(configuration.settings.run_dir, "/run/vdevice");
    EXPECT_EQ(configuration.settings.port_interfaces, "lan");
    EXPECT_EQ(configuration.settings.log_level, LogLevel::kNotice);
    EXPECT_EQ(configuration.settings.create_interfaces, true);
    EXPECT_EQ(configuration.settings.board().user_ports, 8);
    EXPECT_EQ(configuration.interfaces, (std::map<int, std::string>{{1, "lan1"}}));
    EXPECT_EQ(apply(configuration, driver_), std::vector<std::string>{});
    EXPECT_EQ(chip_.macs().age_time().count(), 60);
    const chip::Vlan *vlan = chip_.vlans().find(10);
    ASSERT_NE(vlan, nullptr);
    EXPECT_TRUE(vlan->members.has(0) && vlan->members.has(4) && vlan->members.has(7) && !vlan->members.has(8));
    EXPECT_TRUE(vlan->untagged.has(4) && vlan->untagged.has(5) && !vlan->untagged.has(6));
    EXPECT_EQ(chip_.port(4).pvid, 10);
    EXPECT_TRUE(chip_.port(4).enabled);
    for (const int port : {5, 6, 11}) {
        EXPECT_FALSE(chip_.port(port).enabled);
        EXPECT_EQ(chip_.port(port).phy.speed(), 100U);
        EXPECT_FALSE(chip_.port(port).phy.full_duplex());
        EXPECT_EQ(chip_.stp().state(chip::StpGroups::kDefault, port), chip::StpState::kBlocking);
    }
}

TEST_F(ConfigurationFile, MayBeEmpty) {
    EXPECT_TRUE(read("").steps.empty());
    EXPECT_EQ(read("# nothing\n").settings.board().user_ports, driver::Board::kDefaultUserPorts);
}

TEST_F(ConfigurationFile, YieldsToTheCommandLine) {
    Settings given;
    given.user_ports = 2;
    EXPECT_EQ(fault("[[port]]\nports = 3\n", given),
              "vdeviced.toml:2: the board has no port 3, its user ports are 1 to 2.");
    EXPECT_EQ(given.or_else(read("user-ports = 8\nfirst-port = 9\n", given).settings).board().first_port, 9);
    EXPECT_EQ(given.or_else(read("user-ports = 8\n", given).settings).board().user_ports, 2);
}

TEST_F(ConfigurationFile, IsAppliedAgain) {
    const Configuration first = read("[[vlan]]\nvid = 10\nmembers = 1\n[[vlan]]\nvid = 11\n[[vlan]]\nvid = 1\n");
    ASSERT_TRUE(apply(first, driver_).empty());
    const Configuration second = read("[[vlan]]\nvid = 10\nmembers = \"1-2\"\n");
    ASSERT_TRUE(apply_changes(first, second, driver_).empty());
    EXPECT_TRUE(chip_.vlans().find(10)->members.has(5));
    EXPECT_EQ(chip_.vlans().find(11), nullptr);
    EXPECT_NE(chip_.vlans().find(1), nullptr) << "the default VLAN stays";
}

TEST_F(ConfigurationFile, TellsWhatTheDeviceRefuses) {
    const Configuration configuration = read("[[vlan]]\nvid = 10\n[[port]]\nports = 1\npvid = 10\n");
    const Configuration none = read("[[port]]\nports = 1\n");
    EXPECT_EQ(apply({{}, {}, {}, {configuration.steps.back()}}, driver_).size(), 1U) << "no such VLAN there";
    EXPECT_TRUE(apply(none, driver_).empty());
}

TEST_F(ConfigurationFile, MakesCablesBad) {
    cable::Conditions conditions;
    conditions.loss = 50'000;
    conditions.delay = 1'500'000;
    conditions.seed = 7;
    const char *const text = "[[cable]]\nports = \"3-4\"\nloss = \"5%\"\ndelay = \"1.5ms\"\nseed = 7\n";
    EXPECT_EQ(read(text).cables, (std::map<int, cable::Conditions>{{3, conditions}, {4, conditions}}));
    EXPECT_EQ(read("[[cable]]\nports = 1\n").cables.at(1), cable::Conditions{});
}

struct Fault {
    const char *text;
    const char *told;
};

constexpr Fault kFaults[] = {
    {"\n\n[[vlan]]\nvid = 5000\n", ":4: VLAN 5000 is not in 1 to 4094."},
    {"[[vlan]]\nvid = 0\n", ":2: VLAN 0 is not in 1 to 4094."},
    {"[[vlan]]\nvid = \"x\"\n", ":2: VLAN must be a whole number."},
    {"[[vlan]]\nvid = 1.5\n", ":2: VLAN must be a whole number."},
    {"[[vlan]]\nmembers = 1\n", ":1: a VLAN needs its 'vid'."},
    {"[[vlan]]\nvid = 7\n[[vlan]]\nvid = 7\n", ":3: VLAN 7 is there twice."},
    {"[[vlan]]\nvid = 7\nmembers = \"1-2\"\nuntagged = 3\n", ":1: a port of 'untagged' is not in 'members'."},
    {"[[vlan]]\nvid = 7\nmembers = \"1-27\"\n", ":3: the board has no port 27, its user ports are 1 to 26."},
    {"[[vlan]]\nvid = 7\nmembers = -1\n", ":3: the board has no port -1, its user ports are 1 to 26."},
    {"[[vlan]]\nvid = 7\nmembers = \"1-\"\n", ":3: members must be ports as 3, \"1-4,7\" or \"cpu\"."},
    {"[[vlan]]\nvid = 7\nmembers = []\n", ":3: members must be ports as 3, \"1-4,7\" or \"cpu\"."},
    {"vlan = 7\n", ":1: vlan is written as [[vlan]]."},
    {"vlan = [7]\n", ":1: vlan is written as [[vlan]]."},
    {"[vlan]\nvid = 7\n", ":1: vlan is written as [[vlan]]."},
    {"[[vlan]]\nvid = 7\nmember = 1\n", ":3: there is no key 'member', did you mean 'members'?"},
    {"user-port = 3\n", ":1: there is no key 'user-port', did you mean 'user-ports'?"},
    {"\"a\\u001b[2J\" = 3\n", ":1: there is no key 'a\\x1b[2J'."},
    {"user-ports = 32\n", ":1: user-ports 32 is not in 1 to 31."},
    {"user-ports = 30\nfirst-port = 4\n",
     ": cannot wire such a board: the user ports must lie on the chip's ports 1 to 31."},
    {"ring-slots = 8\n", ":1: ring-slots 8 is not in 16 to 65536."},
    {"port-interfaces = \"a port\"\n", ": port-interfaces must be 1 to 13 letters without blanks, '/' and ':'."},
    {"port-interfaces = \"fourteen-chars\"\n",
     ": port-interfaces must be 1 to 13 letters without blanks, '/' and ':'."},
    {"port-interfaces = \"\"\n", ": port-interfaces must be 1 to 13 letters without blanks, '/' and ':'."},
    {"ring-slots = 17\n", ": cannot make such rings: the number of slots must be a multiple of 16 from 16 to 65536."},
    {"log-level = \"loud\"\n", ":1: log-level must be error, warning, notice or info."},
    {"create-interfaces = 1\n", ":1: create-interfaces must be true or false."},
    {"run-dir = 1\n", ":1: run-dir must be a text in quotes."},
    {"ageing-time = -1\n", ":1: ageing-time -1 is not in 0 to 1000000."},
    {"[[port]]\nspeed = 10\n", ":1: settings of ports need their 'ports'."},
    {"[[port]]\nports = 1\nspeed = 99\n",
     ":3: the device refuses the speed of port 1: an argument has a value that the call gives no meaning "
     "(bad_argument)."},
    {"[[port]]\nports = 25\nduplex = \"half\"\n",
     ":3: the device refuses the duplex mode of port 25: an argument has a value that the call gives no meaning "
     "(bad_argument)."},
    {"[[port]]\nports = 1\npvid = 2\n",
     ":3: the device refuses the PVID of port 1: the VLAN does not exist (vlan_missing)."},
    {"[[port]]\nports = 1\nduplex = \"both\"\n", ":3: duplex must be one of \"half\", \"full\", \"auto\"."},
    {"[[port]]\nports = 1\ninterface = \"a/b\"\n",
     ":3: an interface has a name of 1 to 15 letters without blanks, '/' and ':'."},
    {"[[port]]\nports = \"1-2\"\ninterface = \"a\"\n", ":3: an interface is of one port alone."},
    {"[[port]]\nports = 1\ninterface = \"a\"\n[[port]]\nports = 2\ninterface = \"a\"\n",
     ":6: a port has one interface, and an interface one port."},
    {"[[port]]\nports = 1\ninterface = \"a\"\n[[port]]\nports = 1\ninterface = \"b\"\n",
     ":6: a port has one interface, and an interface one port."},
    {"[[cable]]\nloss = \"5%\"\n", ":1: a cable needs its 'ports'."},
    {"[[cable]]\nports = \"cpu\"\nloss = \"5%\"\n", ":2: the CPU port has no cable."},
    {"[[cable]]\nports = 3\n[[cable]]\nports = \"1-4\"\n", ":4: the cable of port 3 is there twice."},
    {"[[cable]]\nports = 3\nlos = \"5%\"\n", ":3: there is no key 'los', did you mean 'loss'?"},
    {"[[cable]]\nports = 3\nloss = 0.05\n",
     ":3: loss must be a percentage from 0% to 100%, as 5% or 0.1%, with at most four decimals."},
    {"[[cable]]\nports = 3\ndelay = 20\n", ":3: delay must be a time up to 10s, as 20ms, 1.5ms or 300us."},
    {"[[cable]]\nports = 3\njitter = \"20ms\"\n", ":1: the jitter of a cable is at most its delay."},
    {"cable = 3\n", ":1: cable is written as [[cable]]."},
};

TEST_F(ConfigurationFile, TellsMistakesWithTheirLine) {
    for (const Fault &wrong : kFaults) {
        EXPECT_EQ(fault(wrong.text), std::string{"vdeviced.toml"} + wrong.told) << wrong.text;
    }
}

TEST_F(ConfigurationFile, IsRefusedWhenItIsHostile) {
    const auto starts = [](const std::string &text, const std::string &start) {
        return text.substr(0, start.size()) == start;
    };
    EXPECT_PRED2(starts, fault("a = \n"), "vdeviced.toml:1: ");
    EXPECT_PRED2(starts, fault("user-ports = 1\nuser-ports = 2\n"), "vdeviced.toml:2: ");
    EXPECT_PRED2(starts, fault(std::string("a\0\xff\x1b", 4)), "vdeviced.toml:1: ");
    std::string deep_values = "a = ";
    std::string deep_keys = "a";
    for (int depth = 0; depth < 100000; ++depth) {
        deep_values += "[\n";
        deep_keys += ".a";
    }
    EXPECT_PRED2(starts, fault(deep_values), "vdeviced.toml:");
    EXPECT_PRED2(starts, fault("a = " + std::string(900, '{')), "vdeviced.toml:1: ");
    const char *const overlong = "vdeviced.toml:2: the line has more than 1000 octets.";
    EXPECT_EQ(fault("\n" + deep_keys + " = 1\n"), overlong);
    EXPECT_EQ(fault("\n[" + deep_keys + "]\n"), overlong);
    EXPECT_PRED2(starts, fault(deep_keys.substr(0, 999)), "vdeviced.toml:1: ");
    EXPECT_PRED2(starts, fault("[" + deep_keys.substr(0, 997) + "]\n" + deep_keys.substr(0, 995) + " = 1\n"),
                 "vdeviced.toml:1: there is no key 'a'");
    EXPECT_EQ(fault(std::string((1 << 20) + 1, '#')), "cannot read vdeviced.toml: it has more than 1048576 octets.");
    EXPECT_NE(fault("a = \"\x1b[2J\"\n").find("vdeviced.toml:1: "), std::string::npos);
    EXPECT_THROW(read_configuration("/dev/zero", {}), io::Error);
    EXPECT_THROW(read_configuration("/", {}), io::Error);
    ASSERT_EQ(mkfifo((path() + ".pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_THROW(read_configuration(path() + ".pipe", {}), io::Error) << "and is not waited for";
    EXPECT_THROW(read_configuration(path() + ".none", {}), io::Error);
}

}  // namespace configuration_test
}  // namespace vdevice
