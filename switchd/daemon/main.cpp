// adp-switchd: Linux interfaces for the ports of a switch; and, with a command, the client of the running daemon.
#include <argp.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "switchd/daemon/capabilities.h"
#include "switchd/daemon/client.h"
#include "switchd/daemon/configuration.h"
#include "switchd/daemon/handlers.h"
#include "switchd/daemon/log.h"
#include "switchd/daemon/options.h"
#include "switchd/daemon/switchd.h"
#include "text/printable.h"
#include "vdevice/io/error.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/process/control_server.h"
#include "vdevice/process/run_folder.h"
#include "vdevice/process/service.h"
#include "vdevice/process/signals.h"
#include "vdevice/sockets/run_dir.h"

namespace {

using switchd::Configuration;
using switchd::Log;
using switchd::Options;
using vdevice::LogLevel;
using vdevice::UniqueFd;
using vdevice::io::EventLoop;

void print(const std::string &text) {
    std::cout << text << std::flush;
    if (!std::cout) {
        throw vdevice::io::Error{"cannot print the answer."};
    }
}

/** The daemon, whose configuration may change. */
struct Running {
    const Options &options;
    Configuration configuration;
    Log log;
    EventLoop loop;
    std::unique_ptr<switchd::Switchd> daemon;
};

/** A file with a mistake changes nothing. */
void reload(Running &running) {
    vdevice::service::tell_reloading();
    Log &log = running.log;
    try {
        auto [changed, kept] = switchd::read_configuration_again(running.options.file, running.configuration);
        for (const std::string &key : kept) {
            log.write(LogLevel::kWarning, key + " has changed in the file: it changes when adp-switchd starts again");
        }
        running.configuration = std::move(changed);
        running.daemon->configure(running.configuration);
        log.set_level(running.options.log_level ? running.options.log_level : running.configuration.log_level);
        log.write(LogLevel::kNotice, "the configuration was read again");
    } catch (const vdevice::io::Error &error) {
        log.write(LogLevel::kError, std::string{"the configuration stays as it was: "} + error.what());
    }
    vdevice::service::tell_ready();
}

/** SIGHUP lets a daemon with a file read it again, and ends one without, as the other signals do. */
void take_signals(const UniqueFd &signals, Running &running) {
    signalfd_siginfo signal{};
    while (read(signals.get(), &signal, sizeof(signal)) == sizeof(signal)) {
        if (signal.ssi_signo == SIGHUP && !running.options.file.empty()) {
            reload(running);
        } else {
            running.loop.stop();
        }
    }
}

/** From the root on: the keeper of the interfaces goes there. */
std::string run_dir_of(const Options &options, const Configuration &configuration) {
    return std::filesystem::absolute(
        options.run_dir.value_or(configuration.run_dir.value_or(switchd::default_run_dir())));
}

void run_daemon(const Options &options) {
    umask(S_IRWXG | S_IRWXO);  // the socket is for its owner only, from the moment it exists
    vdevice::allow_many_descriptors();
    const UniqueFd signals = vdevice::open_signals(!options.file.empty());
    const Configuration configuration = switchd::read_configuration(options.file);
    Running running{
        options, configuration, Log{options.log_level ? options.log_level : configuration.log_level}, {}, {}};
    const std::string run_dir = run_dir_of(options, configuration);
    const vdevice::RunFolder folder{run_dir, "adp-switchd", switchd::kRunDirVariable};
    switchd::keep_network_capabilities();

    running.daemon = std::make_unique<switchd::Switchd>(running.loop, configuration, running.log, run_dir);
    const switchd::Handlers handlers = switchd::handlers_of(*running.daemon);
    vdevice::ControlServer control{running.loop, vdevice::control_socket(run_dir),
                                   [&](const nlohmann::json &request) { return switchd::answer(handlers, request); }};
    running.loop.add(signals.get(), EPOLLIN, [&](uint32_t) { take_signals(signals, running); });
    const UniqueFd clock = running.loop.every_second([&] {
        control.tick();
        running.daemon->every_second();
        vdevice::service::tell_alive();
    });
    print("adp-switchd: ready\n");
    vdevice::service::tell_ready();
    running.loop.run();
    vdevice::service::tell_stopping();
    running.daemon->end();
}

void check_file(const std::string &file) {
    switchd::read_configuration(file);
    print(file + ": no mistakes\n");
}

}  // namespace

int main(int argc, char **argv) {
    argp_err_exit_status = EXIT_FAILURE;
    try {
        const Options options = switchd::parse_options(argc, argv);
        if (!options.words.empty()) {
            print(switchd::ask(options.run_dir.value_or(switchd::default_run_dir()), options.words, options.json));
        } else if (options.check) {
            check_file(options.file);
        } else {
            run_daemon(options);
        }
        return EXIT_SUCCESS;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "adp-switchd: %s\n", text::on_one_line(error.what()).c_str());
    } catch (...) {
        std::fputs("adp-switchd: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
