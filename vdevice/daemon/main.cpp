// vdeviced: a virtual switch device as a process.
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "vdevice/daemon/control_server.h"
#include "vdevice/daemon/extra.h"
#include "vdevice/daemon/private_folder.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/answer.h"
#include "vdevice/io/error.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/remote/server.h"
#include "vdevice/sockets/run_dir.h"
#include "vdevice/sockets/unique_fd.h"

namespace {

using vdevice::UniqueFd;
using vdevice::io::Error;
using vdevice::io::EventLoop;

struct Options {
    std::string run_dir = vdevice::default_run_dir();
    bool create_interfaces = false;
    vdevice::driver::Board board;
};

/** Makes the signals that end the daemon arrive as events, and ignores the signal of broken sockets. */
UniqueFd end_signals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    UniqueFd fd{signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK)};
    if (!fd || sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) {
        throw vdevice::io::error_from_errno("set up signals");
    }
    std::signal(SIGPIPE, SIG_IGN);
    return fd;
}

void run(const Options &options) {
    if (!options.board.is_possible()) {
        throw Error{"cannot wire such a board: the user ports must lie on the chip's ports 1 to " +
                    std::to_string(vdevice::chip::Switch::kPorts - 1) + "."};
    }
    umask(S_IRWXG | S_IRWXO);  // the sockets are for their owner only, from the moment they exist
    EventLoop loop;
    const UniqueFd signals = end_signals();
    vdevice::make_private_folder(options.run_dir);
    // Created first: a second daemon sees by it that the folder is taken.
    vdevice::Device *running = nullptr;
    vdevice::ControlServer control{loop, vdevice::control_socket(options.run_dir), [&](const nlohmann::json &request) {
                                       return vdevice::inspect::answer(*running, request);
                                   }};
    vdevice::Device device{loop, options.board, options.create_interfaces};
    running = &device;
    vdevice::remote::Server server{device.calls(), vdevice::driver_socket(options.run_dir)};
    vdevice::serve_extra(server, device);
    loop.add(server.poll_fd(), EPOLLIN, [&](uint32_t) { server.serve_ready(); });
    loop.add(signals.get(), EPOLLIN, [&](uint32_t) { loop.stop(); });
    std::cout << "vdeviced: ready" << std::endl;
    loop.run();
}

int run_program(int argc, char **argv) {
    Options options;
    CLI::App app{
        "vdeviced: a virtual switch device. Its user ports are the network interfaces port1, port2, ..., its\n"
        "CPU port is cpu0, and programs reach its driver through a socket in the run folder."};
    app.add_option("--run-dir", options.run_dir, "folder of the device's sockets (VDEVICE_DIR)")->capture_default_str();
    app.add_flag("--create-interfaces", options.create_interfaces,
                 "make the interface pairs cpu0/eth0, port1/host1, ... and remove them at the end");
    app.add_option("--user-ports", options.board.user_ports, "number of user ports")->capture_default_str();
    app.add_option("--first-port", options.board.first_port, "chip port of user port 1")->capture_default_str();
    app.failure_message([](const CLI::App *, const CLI::Error &error) {
        return "vdeviced: " + std::string{error.what()} + ". Run it with --help to see what it takes.\n";
    });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    run(options);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run_program(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdeviced: %s\n", error.what());
    } catch (...) {
        std::fputs("vdeviced: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
