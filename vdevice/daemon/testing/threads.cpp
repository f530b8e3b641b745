// For the daemon's tests: a management program with threads. Each sets and reads a port of its own, while the link scan
// runs, links change and the process forks. Arguments: the first chip port, threads, calls of each. Prints how many
// calls of the threads had the right result, how many links were told, and how many children were right.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "vdevice/remote/vdev_linkscan.h"

namespace {

constexpr int kChildren = 5;

std::atomic<uint32_t> told{0};

int32_t count_change(uint32_t /*unit*/, uint32_t /*port*/, const uint32_t * /*info*/) {
    ++told;
    return sys_trace_get();
}

/** Sets what the port advertises, and reads it. */
bool is_port_right(int32_t port, uint32_t abilities) {
    uint32_t read = 0;
    return user_port_ability_advert_set(0, 0, port, abilities) == 0 &&
           user_port_ability_advert_get(0, 0, port, &read) == 0 && read == abilities && sys_trace_get() == 0;
}

uint32_t right_calls(int32_t port, uint32_t calls) {
    uint32_t right = 0;
    for (uint32_t call = 0; call < calls; ++call) {
        right += is_port_right(port, call) ? 1U : 0U;
        user_port_enable_set(0, 0, port, call % 2);
    }
    return right;
}

bool is_child_right() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(sys_trace_get() == 0 && user_vlan_create(0, 0, 1) != -1 ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 4 || vdev_linkscan_register(count_change) != 0) {
        return EXIT_FAILURE;
    }
    const int first = std::atoi(argv[1]);
    const auto calls = static_cast<uint32_t>(std::atoi(argv[3]));
    std::atomic<uint32_t> right{0};
    std::vector<std::thread> threads(static_cast<size_t>(std::atoi(argv[2])));
    for (size_t number = 0; number < threads.size(); ++number) {
        threads[number] = std::thread([&, number] { right += right_calls(first + static_cast<int>(number), calls); });
    }
    int children = 0;
    for (int number = 0; number < kChildren; ++number) {
        children += is_child_right() ? 1 : 0;
    }
    for (auto &thread : threads) {
        thread.join();
    }
    std::printf("%u %u %d\n", right.load(), told.load(), children);
    return vdev_linkscan_register(nullptr);
}
