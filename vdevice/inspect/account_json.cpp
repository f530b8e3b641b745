// A step is an object with its name in "step". Every port of the board has a row in "ports".
#include "vdevice/inspect/account_json.h"

#include <arpa/inet.h>
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/chip/account/names.h"
#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using namespace chip;
using nlohmann::json;

template <typename Enum>
const char *word(Enum value) {
    return wording(value).word;
}

std::string address_text(bool is_version6, const std::array<uint8_t, 16> &address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(is_version6 ? AF_INET6 : AF_INET, address.data(), text.data(), text.size());
    return text.data();
}

json tag_of(uint16_t tci) {
    return {{"vid", tci & kVidMask}, {"priority", priority_of(tci)}};
}

json packet_of(const PacketRead &packet) {
    json object = {{"version", packet.is_version6 ? 6 : 4},
                   {"source", address_text(packet.is_version6, packet.source)},
                   {"destination", address_text(packet.is_version6, packet.destination)},
                   {"protocol", packet.protocol}};
    if (packet.dscp) {
        object["dscp"] = *packet.dscp;
    }
    if (packet.ports) {
        object["ports"] = *packet.ports;
    }
    return object;
}

/** The object of each type of step. */
class StepJson {
  public:
    explicit StepJson(const driver::Board &board) : board_{board} {}

    json operator()(const CameIn &step) const {
        return {{"step", "in"}, {"port", user(step.port)}, {"octets", step.octets}, {"looped", step.is_looped}};
    }
    json operator()(const IngressLimited &step) const {
        return {{"step", "ingress_limit"}, {"within", step.is_within}};
    }
    json operator()(const CpuTagRead &step) const {
        return {{"step", "cpu_tag"}, {"opcode", static_cast<int>(step.opcode)}, {"ports", users(step.ports)}};
    }
    json operator()(const HeaderRead &step) const {
        json object = {{"step", "header"},
                       {"destination", driver::to_text(step.destination)},
                       {"source", driver::to_text(step.source)},
                       {"type", step.type}};
        if (step.tci) {
            object["tag"] = tag_of(*step.tci);
        }
        if (step.packet) {
            object["packet"] = packet_of(*step.packet);
        }
        return object;
    }
    json operator()(const AttackFilterPassed & /*step*/) const { return {{"step", "attack_filter"}}; }
    json operator()(const VlanChosen &step) const {
        return {{"step", "vlan"}, {"vid", step.vid}, {"by", word(step.by)}};
    }
    json operator()(const PriorityChosen &step) const {
        return with_dscp({{"step", "priority"}, {"priority", step.priority}, {"by", word(step.by)}}, step.dscp);
    }
    json operator()(const RuleMatched &step) const {
        json actions = json::array();
        for (const Action &action : step.actions) {
            actions.push_back(action_of(action));
        }
        return {{"step", "rule"}, {"entry", step.entry}, {"actions", actions}};
    }
    json operator()(const NoRuleMatched &step) const { return {{"step", "no_rule"}, {"action", word(step.action)}}; }
    json operator()(const Metered &step) const {
        return {{"step", "meter"}, {"meter", step.meter}, {"within", step.is_within}};
    }
    json operator()(const ChangedByRules &step) const {
        return with_dscp({{"step", "changed"}, {"vid", step.vid}, {"priority", step.priority}}, step.dscp);
    }
    json operator()(const ForCpuAlone &step) const { return {{"step", "cpu_alone"}, {"reason", word(step.reason)}}; }
    json operator()(const VlanEntered &step) const { return {{"step", "member"}, {"vid", step.vid}}; }
    json operator()(const SpanningTreeAsked &step) const {
        return {{"step", "spanning_tree"}, {"state", word(step.state)}};
    }
    json operator()(const SourceLearned &step) const {
        json object = {{"step", "source"}, {"learned", word(step.learned)}};
        if (step.why) {
            object["why"] = word(*step.why);
        }
        return object;
    }
    json operator()(const DestinationLookedUp &step) const {
        json object = {{"step", "destination"}, {"found", word(step.found)}};
        if (step.found == Found::kPort) {
            object["port"] = user(step.place);
        } else if (step.found == Found::kTrunk) {
            object["trunk"] = step.place;
        }
        if (step.found != Found::kNothing) {
            object["static"] = step.is_static;
        }
        return object;
    }
    json operator()(const StormLimited &step) const {
        return {
            {"step", "storm_limit"}, {"type", kStormTypeTable[index_of(step.type)].name}, {"within", step.is_within}};
    }
    json operator()(const WayChosen &step) const { return {{"step", "way"}, {"way", word(step.way)}}; }
    json operator()(const Dropped &step) const { return {{"step", "dropped"}, {"reason", name(step.reason)}}; }

    int user(int port) const { return board_.user_port(port).value_or(driver::Board::kCpuFrontPort); }
    json users(const PortSet &ports) const {
        json list = json::array();
        ports.for_each([&](int port) {
            if (has(port)) {
                list.push_back(user(port));
            }
        });
        return list;
    }
    bool has(int port) const { return port == chip::kCpuPort || board_.user_port(port).has_value(); }

  private:
    static json with_dscp(json object, const std::optional<uint8_t> &dscp) {
        if (dscp) {
            object["dscp"] = *dscp;
        }
        return object;
    }
    json action_of(const Action &action) const {
        json object = {{"action", name(action)}};
        if (action.kind == ActionKind::kRedirect) {
            object["ports"] = users(action.ports);
        } else if (action.kind != ActionKind::kPermit && action.kind != ActionKind::kDrop &&
                   action.kind != ActionKind::kCopyToCpu && action.kind != ActionKind::kToCpu) {
            object["value"] = action.value;
        }
        return object;
    }

    const driver::Board &board_;
};

json row_of(const Copy &copy) {
    json row = {{"fate", copy.fate == Fate::kLost ? "not" : word(copy.fate)},
                {"form", word(copy.form)},
                {"octets", copy.octets},
                {"priority", copy.priority},
                {"queue", copy.queue}};
    if (copy.fate == Fate::kLost) {
        row["reason"] = word(copy.lost);
    }
    if (copy.form == Form::kTagged || copy.form == Form::kForCpu) {
        row["tag"] = tag_of(copy.tci);
        row["tag"]["type"] = copy.tpid;
    }
    if (copy.trunk) {
        row["trunk"] = copy.trunk->trunk;
        row["hash"] = copy.trunk->hash;
    }
    return row;
}

/** By port: a row a copy, and one for each port without. */
json rows_of(const Account &account, const StepJson &numbers) {
    std::map<int, json> rows;
    for (const auto &[port, reason] : account.unsent) {
        rows[port] = {{"fate", "not"}, {"reason", word(reason)}};
    }
    for (const Copy &copy : account.copies) {
        if (copy.origin == Origin::kSwitched) {
            rows[copy.port] = row_of(copy);
        }
    }
    json list = json::array();
    for (auto &[port, row] : rows) {
        if (numbers.has(port)) {
            row["port"] = numbers.user(port);
            list.push_back(std::move(row));
        }
    }
    return list;
}

json mirrors_of(const Account &account, const StepJson &numbers) {
    json list = json::array();
    for (const Copy &copy : account.copies) {
        if (copy.origin != Origin::kSwitched) {
            json row = row_of(copy);
            row["port"] = numbers.user(copy.port);
            row["origin"] = word(copy.origin);
            list.push_back(std::move(row));
        }
    }
    return list;
}

}  // namespace

json to_json(const Account &account, const driver::Board &board) {
    const StepJson step_json{board};
    json steps = json::array();
    for (const chip::Step &step : account.steps) {
        steps.push_back(std::visit(step_json, step));
    }
    json object = {{"time", seconds(account.time)},
                   {"port", step_json.user(account.ingress)},
                   {"steps", steps},
                   {"ports", rows_of(account, step_json)},
                   {"mirrors", mirrors_of(account, step_json)}};
    if (account.drop) {
        object["drop"] = name(*account.drop);
    }
    if (account.vid) {
        object["vid"] = *account.vid;
    }
    return object;
}

}  // namespace vdevice::inspect
