// The rights that are left, in a process of its own, since they do not come back.
#include "switchd/daemon/capabilities.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <string>

#include "vdevice/io/error.h"

namespace switchd {
namespace capabilities_test {

constexpr int kMissing = 3;
constexpr int kUnexpected = 4;

/** Runs the step in a child; gives its exit status. */
int status_of(const std::function<int()> &step) {
    const pid_t child = fork();
    if (child == 0) {
        int status = kUnexpected;
        try {
            status = step();
        } catch (const vdevice::io::Error &) {
            status = kMissing;
        }
        _exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : kUnexpected;
}

std::map<std::string, uint64_t> own_capabilities() {
    constexpr int kBase = 16;
    std::map<std::string, uint64_t> sets;
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        const bool is_set = line.rfind("Cap", 0) == 0 || line.rfind("NoNewPrivs", 0) == 0;
        if (const size_t colon = line.find(':'); is_set && colon != std::string::npos) {
            sets[line.substr(0, colon)] = std::stoull(line.substr(colon + 1), nullptr, kBase);
        }
    }
    return sets;
}

constexpr uint64_t kBoth = (uint64_t{1} << CAP_NET_ADMIN) | (uint64_t{1} << CAP_NET_RAW);

bool has_both() {
    return (own_capabilities()["CapPrm"] & kBoth) == kBoth;
}

TEST(Capabilities, AreTheTwoOfTheNetworkAlone) {
    if (!has_both()) {
        GTEST_SKIP() << "needs CAP_NET_ADMIN and CAP_NET_RAW";
    }
    EXPECT_EQ(status_of([] {
                  keep_network_capabilities();
                  auto sets = own_capabilities();
                  const bool is_right = sets["CapPrm"] == kBoth && sets["CapEff"] == kBoth && sets["CapInh"] == 0 &&
                                        sets["CapAmb"] == 0 && (sets["CapBnd"] & ~kBoth) == 0 &&
                                        sets["NoNewPrivs"] == 1;
                  return is_right ? 0 : 1;
              }),
              0);
    EXPECT_EQ(status_of([] {
                  keep_network_capabilities();
                  keep_network_capabilities();  // what is given up already does no harm
                  const int packets = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
                  return packets >= 0 && sethostname("x", 1) != 0 ? 0 : 1;
              }),
              0);
}

TEST(Capabilities, AreNotInheritedByPrograms) {
    if (!has_both()) {
        GTEST_SKIP() << "needs CAP_NET_ADMIN and CAP_NET_RAW";
    }
    EXPECT_EQ(status_of([] {
                  keep_network_capabilities();
                  // Root's programs have all of the bounding set.
                  execl("/bin/sh", "sh", "-c",
                        "! grep -E '^CapEff:.*[1-9a-f]' /proc/self/status | grep -qv 0000003000$", nullptr);
                  return kUnexpected;
              }),
              0);
}

/** Becomes another user with both as ambient capabilities, as systemd starts services. */
bool become_user_with_ambient_capabilities() {
    constexpr uid_t kUser = 12345;
    prctl(PR_SET_KEEPCAPS, 1UL, 0UL, 0UL, 0UL);
    __user_cap_header_struct header{};
    header.version = _LINUX_CAPABILITY_VERSION_3;
    __user_cap_data_struct both[_LINUX_CAPABILITY_U32S_3] = {};
    both[0].permitted = both[0].effective = both[0].inheritable = static_cast<uint32_t>(kBoth);
    return setresuid(kUser, kUser, kUser) == 0 && syscall(SYS_capset, &header, both) == 0 &&
           prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, CAP_NET_ADMIN, 0UL, 0UL) == 0 &&
           prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, CAP_NET_RAW, 0UL, 0UL) == 0;
}

TEST(Capabilities, OfAnOrdinaryUserAreTheAmbientOnes) {
    constexpr int kCannot = 5;
    const int status = status_of([] {
        if (!become_user_with_ambient_capabilities()) {
            return kCannot;
        }
        auto sets = own_capabilities();
        if (sets["CapAmb"] != kBoth) {
            return kUnexpected;
        }
        keep_network_capabilities();
        sets = own_capabilities();
        const bool is_right = sets["CapPrm"] == kBoth && sets["CapEff"] == kBoth && sets["CapInh"] == 0 &&
                              sets["CapAmb"] == 0 && sets["NoNewPrivs"] == 1;
        return is_right ? 0 : 1;
    });
    if (status == kCannot) {
        GTEST_SKIP() << "only root can be another user";
    }
    EXPECT_EQ(status, 0);
}

TEST(Capabilities, MustBeThere) {
    EXPECT_EQ(status_of([] {
                  __user_cap_header_struct header{};
                  header.version = _LINUX_CAPABILITY_VERSION_3;
                  __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
                  if (syscall(SYS_capset, &header, none) != 0) {
                      return kUnexpected;
                  }
                  keep_network_capabilities();
                  return 0;
              }),
              kMissing);
}

}  // namespace capabilities_test
}  // namespace switchd
