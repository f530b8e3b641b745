// Limits on learning, and the addresses that they refused.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using chip::LearnLimits;
using chip::Switch;
using chip::TrunkTable;
using nlohmann::json;

/** A row for a limit that is set. */
void add_limit(json &rows, json scope, LearnLimits::Limit limit, uint32_t learned) {
    if (limit != LearnLimits::kNoLimit) {
        scope["limit"] = limit;
        scope["learned"] = learned;
        rows.push_back(std::move(scope));
    }
}

json limits_of(const Device &device) {
    const LearnLimits &limits = device.chip().limits();
    const chip::LearnCounts &counts = device.chip().macs().counts();
    json rows = json::array();
    add_limit(rows, {{"scope", "system"}}, limits.system(), counts.total());
    for (chip::Vid vid = chip::kMinVid; vid <= chip::kMaxVid; ++vid) {
        add_limit(rows, {{"scope", "vlan"}, {"vid", vid}}, limits.of_vlan(vid), counts.in_vlan(vid));
    }
    for (int port = 0; port < Switch::kPorts; ++port) {
        const json scope = {{"scope", "port"}, {"port", user_number(device, port)}};
        add_limit(rows, scope, limits.of_port(port), counts.behind({port}));
    }
    for (int trunk = 0; trunk < TrunkTable::kTrunks; ++trunk) {
        add_limit(rows, {{"scope", "trunk"}, {"trunk", trunk}}, limits.of_trunk(trunk), counts.behind({0, trunk}));
    }
    return rows;
}

json violations_of(const Device &device) {
    json rows = json::array();
    for (int number = 0; number < Switch::kPorts; ++number) {
        const chip::Violations &violations = device.chip().port(number).violations;
        json addresses = json::array();
        for (const auto &[vid, mac] : violations.addresses()) {
            addresses.push_back({{"vid", vid}, {"mac", driver::to_text(mac)}});
        }
        if (!addresses.empty()) {
            rows.push_back({{"port", user_number(device, number)},
                            {"count", violations.count()},
                            {"addresses", std::move(addresses)}});
        }
    }
    return rows;
}

json read_limits(Device &device, const json & /*request*/) {
    return {{"limits", limits_of(device)},
            {"learned", device.chip().macs().counts().total()},
            {"violations", violations_of(device)}};
}

/** The scope of a limit: "vlan 10". */
std::string scope_text(const json &limit) {
    std::string scope = limit["scope"].get<std::string>();
    if (scope == "system") {
        return scope;
    }
    return fmt::format("{} {}", scope, limit[scope == "vlan" ? "vid" : scope].get<int>());
}

std::string show_limits(const json &answer) {
    std::string text = fmt::format("{:<10} {:>10} {:>8}\n", "LIMIT", "ADDRESSES", "LEARNED");
    for (const json &limit : answer["limits"]) {
        text += fmt::format("{:<10} {:>10} {:>8}\n", scope_text(limit), limit["limit"].get<uint32_t>(),
                            limit["learned"].get<uint32_t>());
    }
    text += fmt::format("{} addresses learned\n", answer["learned"].get<uint32_t>());
    for (const json &port : answer["violations"]) {
        text += fmt::format("port {} refused {}\n", port_name(port), port["count"].get<uint32_t>());
        for (const json &address : port["addresses"]) {
            text += fmt::format("{:>4}  {:<17}\n", address["vid"].get<int>(), address["mac"].get<std::string>());
        }
    }
    return text;
}

constexpr Filter kLimitFilters[] = {kByPort, kByVlan};

}  // namespace

extern constexpr Subject kLimits{"limits",    "",          "limits on learning, and the addresses that they refused",
                                 read_limits, show_limits, kLimitFilters};

}  // namespace vdevice::inspect
