#include "tools/vdevctl/l2_tables.h"

#include <fmt/format.h>

#include "tools/vdevctl/port_text.h"

namespace vdevice {
namespace {

using nlohmann::json;

/** "12 s" for a learned address, else what kind of entry it is. */
std::string kind_text(const json &entry) {
    const std::string kind = entry["kind"].get<std::string>();
    if (kind == "dynamic") {
        return fmt::format("{:.0f} s", entry["age"].get<double>());
    }
    const bool drops_to = entry["drops_to"].get<bool>();
    const bool drops_from = entry["drops_from"].get<bool>();
    return kind + (drops_to ? " to" : "") + (drops_from ? " from" : "");
}

/** What the limit is for: "vlan 10". */
std::string scope_text(const json &limit) {
    std::string scope = limit["scope"].get<std::string>();
    if (scope == "system") {
        return scope;
    }
    return fmt::format("{} {}", scope, limit[scope == "vlan" ? "vid" : scope].get<int>());
}

std::string address_text(const json &entry) {
    return fmt::format("{:>4}  {:<17}", entry["vid"].get<int>(), entry["mac"].get<std::string>());
}

std::string known_or_not(const json &value) {
    return value.get<bool>() ? "known" : "unknown";
}

}  // namespace

std::string show_macs(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<17}  {:>4}  {:>5}  {}\n", "VLAN", "ADDRESS", "PORT", "INDEX", "AGE");
    for (const json &entry : answer["macs"]) {
        const int trunk = entry["trunk"].get<int>();
        const std::string place = trunk < 0 ? port_name(entry["port"].get<int>()) : fmt::format("t{}", trunk);
        text += fmt::format("{}  {:>4}  {:>5}  {}\n", address_text(entry), place, entry["index"].get<int>(),
                            kind_text(entry));
    }
    const auto groups = answer["groups"].get<size_t>();
    return text + fmt::format("{} of {} entries, {} of them groups; learned {}, moved {}, aged out {}, refused {}\n",
                              answer["macs"].size() + groups, answer["capacity"].get<uint64_t>(), groups,
                              answer["learned"].get<uint64_t>(), answer["moved"].get<uint64_t>(),
                              answer["aged"].get<uint64_t>(), answer["refused"].get<uint64_t>());
}

std::string show_groups(const json &answer) {
    std::string text = fmt::format("{:>4}  {:<17}  {:>5}  {:>5}  {}\n", "VLAN", "ADDRESS", "GROUP", "INDEX", "PORTS");
    for (const json &entry : answer["mcast"]) {
        text += fmt::format("{}  {:>5}  {:>5}  {}\n", address_text(entry), entry["group"].get<int>(),
                            entry["index"].get<int>(), port_list(entry["ports"]));
    }
    text += fmt::format("{} of {} groups; IPv4 groups {}, IPv6 groups {}\n", answer["mcast"].size(),
                        answer["capacity"].get<int>(), known_or_not(answer["ipv4"]), known_or_not(answer["ipv6"]));
    text += fmt::format("{:>4}  {:<7}  {:<7}  {:<9}  {}\n", "PORT", "ENTRIES", "IPV4", "IPV4 MISS", "IPV6 MISS");
    for (const json &port : answer["ports"]) {
        text += fmt::format("{:>4}  {:<7}  {:<7}  {:<9}  {}\n", port_name(port["port"].get<int>()),
                            port["entries"].get<bool>() ? "used" : "unused", known_or_not(port["ipv4"]),
                            port["ipv4_miss"].get<std::string>(), port["ipv6_miss"].get<std::string>());
    }
    return text;
}

std::string show_limits(const json &answer) {
    std::string text = fmt::format("{:<10} {:>10} {:>8}\n", "LIMIT", "ADDRESSES", "LEARNED");
    for (const json &limit : answer["limits"]) {
        text += fmt::format("{:<10} {:>10} {:>8}\n", scope_text(limit), limit["limit"].get<uint32_t>(),
                            limit["learned"].get<uint32_t>());
    }
    text += fmt::format("{} addresses learned\n", answer["learned"].get<uint32_t>());
    for (const json &port : answer["violations"]) {
        text += fmt::format("port {} refused {}\n", port_name(port["port"].get<int>()), port["count"].get<uint32_t>());
        for (const json &address : port["addresses"]) {
            text += fmt::format("{}\n", address_text(address));
        }
    }
    return text;
}

}  // namespace vdevice
