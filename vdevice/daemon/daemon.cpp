// Puts the parts together, once a second looks after them, and reads the configuration again.
#include "vdevice/daemon/daemon.h"

#include <sys/epoll.h>

#include <nlohmann/json.hpp>

#include "vdevice/daemon/extra.h"
#include "vdevice/inspect/answer.h"
#include "vdevice/io/error.h"
#include "vdevice/process/service.h"
#include "vdevice/sockets/run_dir.h"

namespace vdevice {
namespace {

constexpr const char *kPart = "DAEMON";

Settings checked(const Settings &settings) {
    settings.check();
    return settings;
}

DeviceOptions options_of(const Settings &settings, const Configuration &configuration, const RunFolder &folder) {
    DeviceOptions options;
    if (settings.create_interfaces.value_or(false)) {
        options.cable_mark = folder.mark();
    }
    options.interfaces = configuration.interfaces;
    options.port_interfaces = settings.port_interfaces;
    options.ring_slots = settings.ring_slots.value_or(static_cast<uint32_t>(options.ring_slots));
    options.line_rate = settings.line_rate.value_or(false);
    return options;
}

}  // namespace

Daemon::Daemon(io::EventLoop &loop, const Settings &given, std::string file, Configuration configuration)
    : loop_{loop},
      given_{given},
      file_{std::move(file)},
      configuration_{std::move(configuration)},
      settings_{checked(given_.or_else(configuration_.settings))},
      log_{settings_.log_level},
      folder_{settings_.run_dir.value_or(default_run_dir()), "vdeviced", kRunDirVariable},
      device_{loop_, settings_.board(), options_of(settings_, configuration_, folder_)},
      streams_{device_},
      control_{loop_, control_socket(settings_.run_dir.value_or(default_run_dir())),
               [this](const nlohmann::json &request) { return inspect::answer(device_, request); }, inspect::is_long,
               [this](const nlohmann::json &request, const std::function<void()> &wake) {
                   return streams_.open(request, wake);
               }},
      server_{device_.calls(), driver_socket(settings_.run_dir.value_or(default_run_dir()))} {
    device_.set_note_listener([this](const Note &note) { log_.write(note); });
    const std::vector<std::string> refusals = apply(configuration_, device_.calls());
    if (!refusals.empty()) {
        throw io::Error{refusals.front()};
    }
    change_cables({});
    serve_sockets();
    clock_ = loop_.every_second([this] { tick(); });
    note(LogLevel::kNotice, "a device with user ports 1 to " + std::to_string(device_.board().user_ports) + " runs");
}

void Daemon::serve_sockets() {
    serve_extra(server_, device_);
    loop_.add(server_.poll_fd(), EPOLLIN, [this](uint32_t) { server_.serve_ready(); });
    device_.set_clients_reader([this] {
        return Clients{{{{"driver", server_.clients(), server_.counters().refused},
                         {"control", control_.clients(), control_.rejected()}}},
                       streams_.readers()};
    });
}

void Daemon::tick() {
    server_.tick();
    control_.tick();
    streams_.tick();
    note_rejected("driver", server_.counters().refused, driver_rejected_);
    note_rejected("control", control_.rejected(), control_rejected_);
    service::tell_alive();
}

// Once a second at most, however many there are.
void Daemon::note_rejected(const char *socket, uint64_t rejected, uint64_t &told) {
    if (rejected != told) {
        const std::string count = std::to_string(rejected - told);
        device_.note({static_cast<int>(LogLevel::kWarning),
                      kPart,
                      "the " + std::string{socket} + " socket has too many clients, " + count + " rejected",
                      {{"SOCKET", socket}, {"REJECTED", count}}});
        told = rejected;
    }
}

void Daemon::note(LogLevel level, const std::string &text) {
    Note note{static_cast<int>(level), kPart, text};
    if (has_file()) {
        note.fields.emplace_back("FILE", file_);
    }
    device_.note(note);
}

void Daemon::note_unchangeable(const Configuration &changed) {
    const Settings &now = configuration_.settings;
    const Settings &then = changed.settings;
    const std::pair<const char *, bool> changes[] = {
        {"run-dir", now.run_dir != then.run_dir},
        {"create-interfaces", now.create_interfaces != then.create_interfaces},
        {"user-ports", now.user_ports != then.user_ports},
        {"first-port", now.first_port != then.first_port},
        {"port-interfaces", now.port_interfaces != then.port_interfaces},
        {"ring-slots", now.ring_slots != then.ring_slots},
        {"line-rate", now.line_rate != then.line_rate},
        {"interface", configuration_.interfaces != changed.interfaces},
    };
    for (const auto &[name, is_changed] : changes) {
        if (is_changed) {
            note(LogLevel::kWarning,
                 std::string{name} + " has changed in the file: it changes when vdeviced starts again");
        }
    }
}

/** The file's cables hold, and those that only the earlier file has are good ones. A cable that is right goes on. */
void Daemon::change_cables(const std::map<int, cable::Conditions> &earlier) {
    for (const auto &[port, conditions] : earlier) {
        if (!configuration_.cables.contains(port)) {
            device_.set_conditions(port, {});
        }
    }
    for (const auto &[port, conditions] : configuration_.cables) {
        if (device_.conditions(port) != conditions) {
            device_.set_conditions(port, conditions);
        }
    }
}

void Daemon::reload() {
    service::tell_reloading();
    try {
        Settings fixed = given_;  // the file's ports must be those of the running board
        fixed.user_ports = device_.board().user_ports;
        fixed.first_port = device_.board().first_port;
        Configuration changed = read_configuration(file_, fixed);
        note_unchangeable(changed);
        log_.set_level(given_.or_else(changed.settings).log_level);
        for (const std::string &refusal : apply_changes(configuration_, changed, device_.calls())) {
            note(LogLevel::kError, refusal);
        }
        const std::map<int, cable::Conditions> cables = std::exchange(configuration_, std::move(changed)).cables;
        change_cables(cables);
        note(LogLevel::kNotice, "the configuration was read again");
    } catch (const io::Error &error) {
        note(LogLevel::kError, std::string{"the configuration stays as it was: "} + error.what());
    }
    service::tell_ready();
}

}  // namespace vdevice
