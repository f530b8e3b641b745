// What follows from a configuration.
#include "switchd/daemon/configuration.h"

namespace switchd {
namespace {

template <typename Value>
void keep(std::vector<std::string> &changed, const char *key, Value &read, const Value &running) {
    if (read != running) {
        changed.emplace_back(key);
        read = running;
    }
}

}  // namespace

Configuration::Port Configuration::port(uint32_t intf) const {
    const auto found = ports.find(intf);
    return found == ports.end() ? Port{} : found->second;
}

std::vector<std::string> keep_fixed(Configuration &read, const Configuration &running) {
    std::vector<std::string> changed;
    keep(changed, "run_dir", read.run_dir, running.run_dir);
    keep(changed, "cpu_interface", read.cpu_interface, running.cpu_interface);
    keep(changed, "user_ports", read.user_ports, running.user_ports);
    keep(changed, "cpu_physical_port", read.cpu_physical_port, running.cpu_physical_port);
    keep(changed, "physical_ports", read.physical_ports, running.physical_ports);
    keep(changed, "first_internal_vid", read.first_internal_vid, running.first_internal_vid);
    keep(changed, "mac", read.mac, running.mac);
    keep(changed, "interfaces_kind", read.interfaces_kind, running.interfaces_kind);
    return changed;
}

}  // namespace switchd
