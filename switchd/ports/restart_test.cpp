// A daemon is killed; the next one takes its TAP interfaces over, and their carrier has never gone.
#include <adp/types.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "switchd/ports/testing/interface_fixture.h"
#include "vdevice/io/link_monitor.h"
#include "vdevice/io/testing/processor_time.h"

namespace switchd {
namespace restart_test {

using namespace test;

const std::set<PortName> kPorts = {{1, 0}, {2, 0}, {2, 100}};

class RestartTest : public testing::Test {
  protected:
    RestartTest() {
        EXPECT_NE(mkdtemp(folder_), nullptr);
        path_ = std::string{folder_} + "/keeper";
    }
    ~RestartTest() override {
        unlink(path_.c_str());
        rmdir(folder_);
    }
    void SetUp() override {
        if (best_interface_kind() != InterfaceKind::kTap) {
            GTEST_SKIP() << "this user may have no TAP interface here";
        }
    }
    std::unique_ptr<Interfaces> start() { return start_on(loop_); }
    std::unique_ptr<Interfaces> start_on(vdevice::io::EventLoop &loop) {
        auto interfaces = std::make_unique<Interfaces>(loop, InterfaceSettings{}, path_, [this](Interface &interface) {
            interface.read(room_, [this](vdevice::chip::Bytes frame) { received_.push_back(octets_of(frame)); });
        });
        for (const std::string &refusal : interfaces->set_wanted(kPorts)) {
            ADD_FAILURE() << refusal;
        }
        return interfaces;
    }
    /** A process makes the interfaces, with carrier, and is killed. */
    void live_and_be_killed() {
        int ready[2] = {-1, -1};
        ASSERT_EQ(pipe(ready), 0);
        const pid_t daemon = fork();
        if (daemon == 0) {
            vdevice::io::EventLoop loop;
            const auto interfaces = start_on(loop);
            for (const uint32_t port : {1U, 2U}) {
                interfaces->set_carrier(port, true);
            }
            ip("link set swp1 up");
            ip("link set swp2 up");
            ip("link set swp2.100 up");
            (void)!write(ready[1], "", 1);
            pause();
        }
        char octet = 0;
        ASSERT_EQ(read(ready[0], &octet, 1), 1);
        close(ready[0]);
        close(ready[1]);
        ASSERT_TRUE(comes_true([] { return find_link("swp1")->carrier && find_link("swp2.100")->carrier; }));
        watch();
        ::kill(daemon, SIGKILL);
        ASSERT_EQ(waitpid(daemon, nullptr, 0), daemon);
    }
    /** From now on each change of a link is heard. */
    void watch() {
        monitor_ = std::make_unique<vdevice::io::LinkMonitor>(
            [this](const vdevice::io::LinkChange &change) {
                changes_ += change.name.starts_with("swp") && !change.link ? change.name + " down " : "";
            },
            [] {});
        read_changes();
        ASSERT_EQ(changes_, "");
    }
    void read_changes() {
        pollfd waiting{monitor_->fd(), POLLIN, 0};
        while (poll(&waiting, 1, 200) == 1) {
            monitor_->read_changes();
        }
        EXPECT_EQ(monitor_->losses(), 0U);
    }

    char folder_[40] = "/tmp/switchd-restart-test-XXXXXX";
    std::string path_;
    vdevice::io::EventLoop loop_;
    ReadRoom room_;
    std::vector<Octets> received_;
    std::unique_ptr<vdevice::io::LinkMonitor> monitor_;
    std::string changes_;
};

TEST_F(RestartTest, CarrierStaysWhileThereIsNoDaemonAndWhenTheNextOneComes) {
    live_and_be_killed();
    read_changes();
    EXPECT_EQ(changes_, "") << "the daemon is dead";
    const int index = find_link("swp1")->index;
    const auto interfaces = start();
    EXPECT_EQ(interfaces->find(PortName{1, 0})->index(), index);
    interfaces->set_carrier(1, true);
    read_changes();
    EXPECT_EQ(changes_, "") << "the next one has taken over";
    for (const auto &[port, interface] : interfaces->all()) {
        EXPECT_TRUE(find_link(name_of(port))->carrier) << name_of(port);
    }
    Program program{"swp1"};
    const Octets frame(64, 0x5A);
    program.send(frame);
    EXPECT_TRUE(comes_true([&] {
        loop_.run_once(0);
        return std::find(received_.begin(), received_.end(), frame) != received_.end();
    }));
    interfaces->remove_all();
    EXPECT_FALSE(find_link("swp1"));
    EXPECT_NE(access(path_.c_str(), F_OK), 0) << "the keeper has ended";
}

TEST_F(RestartTest, FramesFromTheTimeWithoutADaemonAreNotSent) {
    live_and_be_killed();
    {
        Program program{"swp1"};
        program.send(Octets(64, 0x5B));
    }
    const auto interfaces = start();
    while (loop_.run_once(50)) {
    }
    EXPECT_EQ(std::count(received_.begin(), received_.end(), Octets(64, 0x5B)), 0);
    interfaces->remove_all();
}

TEST_F(RestartTest, WithoutTheKeeperTheInterfacesAreTakenOverAllTheSame) {
    live_and_be_killed();
    unlink(path_.c_str());
    ASSERT_TRUE(comes_true([] { return !find_link("swp1")->carrier; })) << "the keeper ends, and with it the carrier";
    const int index = find_link("swp1")->index;
    const auto interfaces = start();
    EXPECT_EQ(interfaces->find(PortName{1, 0})->index(), index);
    interfaces->set_carrier(1, true);
    EXPECT_TRUE(comes_true([] { return find_link("swp1")->carrier; }));
    interfaces->remove_all();
}

TEST_F(RestartTest, ATextInTheMarksPlaceDoesNoHarm) {
    live_and_be_killed();
    ip("link set swp1 alias 'to the core'");
    const int index = find_link("swp1")->index;
    const auto interfaces = start();
    EXPECT_EQ(interfaces->find(PortName{1, 0})->index(), index);
    EXPECT_EQ(find_link("swp1")->alias, "to the core");
    interfaces->remove_all();
    EXPECT_FALSE(find_link("swp1"));
}

TEST_F(RestartTest, PairsTakeThePlaceOfKeptInterfaces) {
    live_and_be_killed();
    InterfaceSettings settings;
    settings.kind = InterfaceKind::kVeth;
    Interfaces other{loop_, settings, path_, [](Interface &) {}};
    EXPECT_TRUE(other.set_wanted(kPorts).empty());
    EXPECT_EQ(find_link("swp1")->kind, "veth");
    EXPECT_NE(access(path_.c_str(), F_OK), 0) << "the keeper ends";
    other.remove_all();
}

TEST_F(RestartTest, ManyInterfacesAreTakenOverInLessThanASecondOfProcessorTime) {
    std::set<PortName> many;
    for (uint32_t port = 1; port <= ADP_USER_PORTS; ++port) {
        for (uint16_t vid = 0; vid < 10; ++vid) {
            many.insert({port, vid});
        }
    }
    Interfaces{loop_, {}, path_, [](Interface &) {}}.set_wanted(many);
    const double before = vdevice::io::processor_seconds();
    Interfaces next{loop_, {}, path_, [](Interface &) {}};
    EXPECT_TRUE(next.set_wanted(many).empty());
    const double took = vdevice::io::processor_seconds() - before;
    EXPECT_LT(took, 1.0);
    std::printf("%zu interfaces in %.0f ms of processor time\n", many.size(), 1000 * took);
    next.remove_all();
    EXPECT_FALSE(find_link("swp26.9"));
}

TEST_F(RestartTest, TwoDaemonsAtOnceAreRefused) {
    live_and_be_killed();
    vdevice::io::EventLoop loop;
    Interfaces other{loop, {}, "", [](Interface &) {}};
    const std::vector<std::string> refusals = other.set_wanted(kPorts);
    ASSERT_EQ(refusals.size(), 3U);
    EXPECT_THAT(refusals[0], testing::HasSubstr("cannot take interface swp1: another process holds it"));
    start()->remove_all();
}

}  // namespace restart_test
}  // namespace switchd
