// vdevctl: looks into a running virtual device and moves its cables.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/vdevctl/client.h"
#include "tools/vdevctl/tables.h"
#include "vdevice/daemon/run_dir.h"

namespace {

struct Options {
    std::string run_dir = vdevice::default_run_dir();
    bool json = false;
    int port = 0;
    int trace = 0;
    std::optional<int> pin;
    std::optional<int> level;
};

/** Without arguments it shows the pins, with both it drives one. */
void add_gpio(CLI::App &app, Options &options) {
    CLI::App *command = app.add_subcommand("gpio", "the general-purpose pins; with PIN and LEVEL, drive an input pin");
    CLI::Option *pin = command->add_option("pin", options.pin);
    pin->needs(command->add_option("level", options.level));
}

void add_commands(CLI::App &app, Options &options) {
    app.add_subcommand("ports", "the ports with their state");
    app.add_subcommand("vlans", "the VLAN table");
    app.add_subcommand("macs", "the MAC table");
    app.add_subcommand("mcast", "the multicast groups, and what becomes of unknown ones");
    app.add_subcommand("limits", "limits on learning, and the addresses that they refused");
    app.add_subcommand("trunks", "the trunks with their members");
    app.add_subcommand("counters", "frames and octets of each port, and why frames were dropped");
    app.add_subcommand("log", "what the device and its software logged");
    app.add_subcommand("events", "messages waiting in the event queue");
    app.add_subcommand("reserved", "addresses and protocols whose frames go to the CPU alone");
    app.add_subcommand("mirrors", "the mirror sessions with their ports");
    app.add_subcommand("groups", "the spanning-tree groups with their VLANs and the ports' states");
    app.add_subcommand("translations", "what becomes of VLAN tags: translations, subnets, double tags");
    app.add_subcommand("priorities", "which priorities and queues frames get, and what the queues have sent");
    app.add_subcommand("fields", "the field processor's entries, counters and miss actions");
    app.add_subcommand("storm", "storm limits and ingress limits, what passed them, and the exceeded flags");
    app.add_subcommand("meters", "the field processor's meters");
    app.add_subcommand("queues", "the ports' egress queues, how they are scheduled and shaped");
    add_gpio(app, options);
    app.add_subcommand("version", "version and board of the running device");
    app.add_subcommand("pull", "pull a user port's cable")->add_option("port", options.port)->required();
    app.add_subcommand("plug", "plug it in again")->add_option("port", options.port)->required();
    app.add_subcommand("trace", "what sys_trace_get() answers: 0 off, other numbers on")
        ->add_option("value", options.trace)
        ->required();
    app.require_subcommand(1);
}

nlohmann::json request_for(const std::string &command, const Options &options) {
    nlohmann::json request = {{"command", command}};
    if (command == "pull" || command == "plug") {
        request["port"] = options.port;
    } else if (command == "trace") {
        request["value"] = options.trace;
    } else if (options.pin && options.level) {
        request["pin"] = *options.pin;
        request["level"] = *options.level;
    }
    return request;
}

int run_program(int argc, char **argv) {
    Options options;
    CLI::App app{"vdevctl: looks into a running virtual device and moves its cables."};
    app.add_option("--run-dir", options.run_dir, "folder of the device's sockets (VDEVICE_DIR)")->capture_default_str();
    app.add_flag("--json", options.json, "answer in JSON");
    add_commands(app, options);
    app.failure_message([](const CLI::App *, const CLI::Error &error) {
        return "vdevctl: " + std::string{error.what()} + ". Run it with --help to see what it takes.\n";
    });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const std::string command = app.get_subcommands().front()->get_name();
    const nlohmann::json answer = vdevice::ask_device(options.run_dir, request_for(command, options));
    std::cout << (options.json ? answer.dump(2) + "\n" : vdevice::show(command, answer));
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run_program(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vdevctl: %s\n", error.what());
    } catch (...) {
        std::fputs("vdevctl: an unknown failure.\n", stderr);
    }
    return EXIT_FAILURE;
}
