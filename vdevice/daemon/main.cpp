// vdeviced: a virtual switch device as a process.
#include <argp.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "text/printable.h"
#include "vdevice/daemon/daemon.h"
#include "vdevice/daemon/options.h"
#include "vdevice/io/error.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/process/service.h"
#include "vdevice/process/signals.h"
#include "vdevice/sockets/unique_fd.h"

namespace {

using vdevice::UniqueFd;
using vdevice::io::EventLoop;

/** SIGHUP lets a daemon with a file read it again, and ends one without, as the other signals do. */
void take_signals(const UniqueFd &signals, EventLoop &loop, vdevice::Daemon &daemon) {
    signalfd_siginfo signal{};
    while (read(signals.get(), &signal, sizeof(signal)) == sizeof(signal)) {
        if (signal.ssi_signo == SIGHUP && daemon.has_file()) {
            daemon.reload();
        } else {
            loop.stop();
        }
    }
}

void run(const vdevice::Options &options) {
    umask(S_IRWXG | S_IRWXO);  // the sockets are for their owner only, from the moment they exist
    vdevice::allow_many_descriptors();
    EventLoop loop;
    const UniqueFd signals = vdevice::open_signals(!options.file.empty());
    vdevice::Configuration configuration;
    if (!options.file.empty()) {
        configuration = vdevice::read_configuration(options.file, options.settings);
    }
    if (options.check) {
        std::cout << options.file << ": no mistakes\n";
        return;
    }
    vdevice::Daemon daemon{loop, options.settings, options.file, std::move(configuration)};
    loop.add(signals.get(), EPOLLIN, [&](uint32_t) { take_signals(signals, loop, daemon); });
    std::cout << "vdeviced: ready" << std::endl;
    vdevice::service::tell_ready();
    loop.run();
    vdevice::service::tell_stopping();
}

}  // namespace

int main(int argc, char **argv) {
    argp_err_exit_status = EXIT_FAILURE;
    try {
        run(vdevice::parse_options(argc, argv));
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdeviced: %s\n", text::on_one_line(error.what()).c_str());
    } catch (...) {
        std::fputs("vdeviced: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
