// vdeviced: a virtual switch device as a process.
#include <argp.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "vdevice/daemon/control_server.h"
#include "vdevice/daemon/extra.h"
#include "vdevice/daemon/run_folder.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/answer.h"
#include "vdevice/io/error.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/io/receive_ring.h"
#include "vdevice/remote/server.h"
#include "vdevice/sockets/run_dir.h"
#include "vdevice/sockets/unique_fd.h"

namespace {

using vdevice::UniqueFd;
using vdevice::io::Error;
using vdevice::io::EventLoop;
using vdevice::io::ReceiveRing;

struct Options {
    std::string run_dir = vdevice::default_run_dir();
    bool create_interfaces = false;
    vdevice::driver::Board board;
    vdevice::DeviceOptions device;
};

/** Makes the signals that end the daemon arrive as events, and ignores the signal of broken sockets. */
UniqueFd end_signals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGQUIT}) {
        sigaddset(&signals, signal);
    }
    struct sigaction before {};
    if (sigaction(SIGHUP, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
        sigaddset(&signals, SIGHUP);  // 'nohup' ignores it, so that the daemon outlives its terminal
    }
    UniqueFd fd{signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK)};
    if (!fd || sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) {
        throw vdevice::io::error_from_errno("set up signals");
    }
    std::signal(SIGPIPE, SIG_IGN);
    return fd;
}

/** Each client, port and timer needs a descriptor. */
void allow_many_descriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void run(const Options &options) {
    if (!options.board.is_possible()) {
        throw Error{"cannot wire such a board: the user ports must lie on the chip's ports 1 to " +
                    std::to_string(vdevice::chip::Switch::kPorts - 1) + "."};
    }
    if (!ReceiveRing::may_have(options.device.ring_slots)) {
        throw Error{"cannot make such rings: the number of slots must be a multiple of " +
                    std::to_string(ReceiveRing::kSlotsInBlock) + " from " + std::to_string(ReceiveRing::kSlotsInBlock) +
                    " to " + std::to_string(ReceiveRing::kMostSlots) + "."};
    }
    umask(S_IRWXG | S_IRWXO);  // the sockets are for their owner only, from the moment they exist
    allow_many_descriptors();
    EventLoop loop;
    const UniqueFd signals = end_signals();
    const vdevice::RunFolder folder{options.run_dir};
    vdevice::DeviceOptions device_options = options.device;
    if (options.create_interfaces) {
        device_options.cable_mark = folder.mark();
    }
    vdevice::Device device{loop, options.board, device_options};
    vdevice::ControlServer control{
        loop, vdevice::control_socket(options.run_dir),
        [&](const nlohmann::json &request) { return vdevice::inspect::answer(device, request); },
        vdevice::inspect::is_long};
    vdevice::remote::Server server{device.calls(), vdevice::driver_socket(options.run_dir)};
    vdevice::serve_extra(server, device);
    loop.add(server.poll_fd(), EPOLLIN, [&](uint32_t) { server.serve_ready(); });
    const UniqueFd clock = loop.every_second([&] {
        server.tick();
        control.tick();
    });
    loop.add(signals.get(), EPOLLIN, [&](uint32_t) { loop.stop(); });
    std::cout << "vdeviced: ready" << std::endl;
    loop.run();
}

enum Key : int { kRunDir = 1, kCreateInterfaces, kUserPorts, kFirstPort, kRingSlots, kLineRate };

const argp_option kOptions[] = {
    {"run-dir", kRunDir, "DIR", 0, vdevice::kRunDirHelp, 0},
    {"create-interfaces", kCreateInterfaces, nullptr, 0,
     "make the interface pairs cpu0/eth0, port1/host1, ... and remove them at the end", 0},
    {"user-ports", kUserPorts, "N", 0, "number of user ports, 26 by default", 0},
    {"first-port", kFirstPort, "P", 0, "chip port of user port 1, 4 by default", 0},
    {"ring-slots", kRingSlots, "N", 0,
     "slots of each port's receive ring, a multiple of 16, 2048 by default: 2 KiB each, "
     "108 MiB for the rings of 26 user ports and the CPU port",
     0},
    {"line-rate", kLineRate, nullptr, 0,
     "user ports send no faster than their speed; by default as fast as the machine can", 0},
    {}};

template <typename Number>
void read_number(const argp_state *state, std::string_view text, Number &number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        argp_error(state, "'%s' is not a number", std::string{text}.c_str());
    }
}

error_t take_option(int key, char *argument, argp_state *state) {
    auto &options = *static_cast<Options *>(state->input);
    switch (key) {
        case kRunDir:
            options.run_dir = argument;
            return 0;
        case kCreateInterfaces:
            options.create_interfaces = true;
            return 0;
        case kUserPorts:
            read_number(state, argument, options.board.user_ports);
            return 0;
        case kFirstPort:
            read_number(state, argument, options.board.first_port);
            return 0;
        case kRingSlots:
            read_number(state, argument, options.device.ring_slots);
            return 0;
        case kLineRate:
            options.device.line_rate = true;
            return 0;
        default:
            return ARGP_ERR_UNKNOWN;
    }
}

int run_program(int argc, char **argv) {
    const argp parser = {
        kOptions,
        take_option,
        nullptr,
        "vdeviced: a virtual switch device. Its user ports are the network interfaces port1, port2, ..., "
        "its CPU port is cpu0, and programs reach its driver through a socket in the run folder.",
        nullptr,
        nullptr,
        nullptr};
    Options options;
    if (argp_parse(&parser, argc, argv, 0, nullptr, &options) != 0) {
        return EXIT_FAILURE;
    }
    run(options);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
    argp_err_exit_status = EXIT_FAILURE;
    try {
        return run_program(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdeviced: %s\n", error.what());
    } catch (...) {
        std::fputs("vdeviced: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
