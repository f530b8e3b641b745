// The parts that a state is made of: a function for each of its larger members.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "vdevice/driver/driver.h"

namespace vdevice::state {

/** What the parts are read from. */
struct Source {
    const chip::Switch &chip;
    const driver::Driver &driver;

    /** A port's name as a member: "3" for a user port, "cpu", "chip 30" for a port without a wire. */
    std::string key(int chip_port) const;
    /** The same as a value, where a user port is a number. */
    nlohmann::json port(int chip_port) const;
    nlohmann::json ports(const chip::PortSet &chip_ports) const;
};

/** The name of an address: "10 02:00:00:00:00:01". */
std::string key(const chip::MacEntry &entry);

nlohmann::json ports_of(const Source &source);
nlohmann::json vlans_of(const Source &source);
nlohmann::json addresses_of(const Source &source);
nlohmann::json groups_of(const Source &source);
nlohmann::json trunks_of(const Source &source);
nlohmann::json spanning_tree_of(const Source &source);
nlohmann::json mirrors_of(const Source &source);
nlohmann::json tags_of(const Source &source);
nlohmann::json limits_of(const Source &source);
nlohmann::json priorities_of(const Source &source);
nlohmann::json fields_of(const Source &source);
nlohmann::json controls_of(const Source &source);
nlohmann::json lists_of(const Source &source);
nlohmann::json running_of(const Source &source);

}  // namespace vdevice::state
