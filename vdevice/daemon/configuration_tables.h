// What the tables of the configuration file share while it is read.
#pragma once

#include <string>
#include <vector>

#include "vdevice/daemon/configuration.h"
#include "vdevice/process/toml_file.h"

namespace vdevice::configuration_file {

constexpr int kCpuPort = 0;

/** What is known while a file is read. */
struct File : toml_file::File {
    Settings given;
    Configuration configuration;
    std::vector<Step> port_steps; /**< after those of VLANs, which must be there */
    driver::Board board;          /**< known when the tables of ports, VLANs and cables are read */
};

/** User ports of 3, "3", "1-4,7" or "cpu", each of which the board has. */
std::vector<int> ports_of(const File &file, const toml::node &value, const char *name);

/** Hands each table of a list to read(file, table). */
template <typename Read>
void read_list(File &file, const toml::node &value, const char *name, Read read) {
    const toml::array *list = value.as_array();
    if (list == nullptr || !list->is_homogeneous(toml::node_type::table)) {
        file.fail(value.source(), std::string{name} + " is written as [[" + name + "]].");
    }
    for (const toml::node &entry : *list) {
        read(file, *entry.as_table());
    }
}

/** A table of [[cable]]. */
void read_cable(File &file, const toml::table &table);

}  // namespace vdevice::configuration_file
