// Values of the configuration file that several of its tables have: interfaces of the switch, VLANs. Included by the
// files that read a part of it alone.
#pragma once

#include <adp/types.h>

#include <string>
#include <string_view>

#include "switchd/daemon/configuration.h"
#include "vdevice/process/toml_file.h"

namespace switchd::configuration_file {

namespace toml_file = vdevice::toml_file;

/** What is known while the file is read. */
struct File : toml_file::File {
    Configuration configuration;
    uint32_t first_physical_port = 4;
};

template <typename Target>
using Key = toml_file::Key<File, Target>;

/** A part of somebody else's text. */
std::string quoted(std::string_view name);
bool is_group(const PortName &port);

/** An interface of the switch, with a tag or without. */
PortName port_named(const File &file, const toml::source_region &where, std::string_view name);
/** An interface without a tag. */
PortName whole_port_named(const File &file, const toml::source_region &where, std::string_view name);
bool is_in_a_group(const Configuration &configuration, uint32_t port);

const toml::table &table_of(const File &file, const toml::node &value, const std::string &name);
const toml::array &list_of(const File &file, const toml::node &value, const char *name);

// These read [groups] and, after them, [ports].
void read_groups(File &file, const toml::node &value);
void read_ports(File &file, const toml::node &value);

}  // namespace switchd::configuration_file
