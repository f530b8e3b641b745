// Ports in the configuration file, and the keys of [[cable]].
#include "vdevice/daemon/configuration_tables.h"

#include <algorithm>
#include <iterator>

#include "vdevice/inspect/number_list.h"

namespace vdevice::configuration_file {
namespace {

constexpr const char *kPortsKey = "ports";

/** A number is written with quotes or without. */
std::string word_of(const toml::node &value) {
    const auto number = value.value_exact<int64_t>();
    return number ? std::to_string(*number) : value.value_exact<std::string>().value_or("");
}

const cable::Option &option_of(const File &file, const toml::key &key) {
    const auto *const found = std::find_if(std::begin(cable::kOptions), std::end(cable::kOptions),
                                           [&](const cable::Option &option) { return option.name == key.str(); });
    if (found == std::end(cable::kOptions)) {
        std::vector<std::string_view> names{kPortsKey};
        std::transform(std::begin(cable::kOptions), std::end(cable::kOptions), std::back_inserter(names),
                       [](const cable::Option &option) { return option.name; });
        toml_file::fail_at_key(file, key, names);
    }
    return *found;
}

cable::Conditions conditions_of(const File &file, const toml::table &table) {
    cable::Conditions conditions;
    for (const auto &[key, value] : table) {
        if (key.str() == kPortsKey) {
            continue;
        }
        const cable::Option &option = option_of(file, key);
        const auto condition = cable::value_of(option, word_of(value));
        if (!condition) {
            file.fail(value.source(), std::string{option.name} + " must be " + option.takes + ".");
        }
        conditions.*option.condition = *condition;
    }
    if (const char *fault = cable::fault_of(conditions)) {
        file.fail(table.source(), fault);
    }
    return conditions;
}

}  // namespace

std::vector<int> ports_of(const File &file, const toml::node &value, const char *name) {
    const auto number = value.value_exact<int64_t>();
    const auto list = number ? std::vector<inspect::NumberRange>{{*number, *number}}
                             : inspect::number_list(value.value_exact<std::string>().value_or("?"));
    if (!list) {
        file.fail(value.source(), std::string{name} + " must be ports as 3, \"1-4,7\" or \"cpu\".");
    }
    std::vector<int> ports;
    for (const inspect::NumberRange &range : *list) {
        if (range.first < kCpuPort || range.last > file.board.user_ports) {
            file.fail(value.source(), "the board has no port " +
                                          std::to_string(range.first < kCpuPort ? range.first : range.last) +
                                          ", its user ports are 1 to " + std::to_string(file.board.user_ports) + ".");
        }
        for (int64_t port = range.first; port <= range.last; ++port) {
            ports.push_back(static_cast<int>(port));
        }
    }
    return ports;
}

void read_cable(File &file, const toml::table &table) {
    const toml::node *ports = table.get(kPortsKey);
    if (ports == nullptr) {
        file.fail(table.source(), "a cable needs its 'ports'.");
    }
    const cable::Conditions conditions = conditions_of(file, table);
    for (const int port : ports_of(file, *ports, kPortsKey)) {
        if (port == kCpuPort) {
            file.fail(ports->source(), "the CPU port has no cable.");
        }
        if (!file.configuration.cables.emplace(port, conditions).second) {
            file.fail(ports->source(), "the cable of port " + std::to_string(port) + " is there twice.");
        }
    }
}

}  // namespace vdevice::configuration_file
