// A sentence a step; ports with the same fate are drawn together.
#include "vdevice/inspect/account_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "vdevice/chip/account/names.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

std::string string_of(const json &object, const char *member) {
    return object[member].get<std::string>();
}

int number_of(const json &object, const char *member) {
    return object[member].get<int>();
}

/** What the word of a table says. */
template <typename Enum>
std::string text_of(const json &object, const char *member) {
    const auto &rows = chip::Wordings<Enum>::kRows;
    const auto *row =
        std::find_if(rows.begin(), rows.end(), [&](const auto &each) { return object[member] == each.word; });
    return row == rows.end() ? string_of(object, member) : row->text;
}

std::string tag_text(const json &tag) {
    return fmt::format("VLAN {} priority {}", number_of(tag, "vid"), number_of(tag, "priority"));
}

std::string end_text(const json &packet, const char *end, size_t which) {
    std::string address = string_of(packet, end);
    if (!packet.contains("ports")) {
        return address;
    }
    const int port = packet["ports"][which].get<int>();
    return packet["version"] == 6 ? fmt::format("[{}]:{}", address, port) : fmt::format("{}:{}", address, port);
}

std::string packet_text(const json &packet) {
    const std::string dscp = packet.contains("dscp") ? fmt::format(", DSCP {}", number_of(packet, "dscp")) : "";
    return fmt::format("{} > {}, IP protocol {}{}", end_text(packet, "source", 0), end_text(packet, "destination", 1),
                       number_of(packet, "protocol"), dscp);
}

std::string header_text(const json &step) {
    std::string text = fmt::format("{} > {}", string_of(step, "source"), string_of(step, "destination"));
    text += step.contains("tag") ? ", tag " + tag_text(step["tag"]) : ", untagged";
    text += fmt::format(", type {:#06x}", number_of(step, "type"));
    return step.contains("packet") ? text + "\n  " + packet_text(step["packet"]) : text;
}

std::string in_text(const json &step) {
    return fmt::format("{} port {}, {} octets", step["looped"].get<bool>() ? "looped back into" : "in by",
                       port_name(number_of(step, "port")), number_of(step, "octets"));
}

std::string cpu_tag_text(const json &step) {
    const std::string ports = step["ports"].empty() ? "" : ", to ports " + port_list(step["ports"]);
    return fmt::format("switch tag: opcode {}{}", number_of(step, "opcode"), ports);
}

std::string dscp_text(const json &step) {
    return step.contains("dscp") ? fmt::format(", leaves with DSCP {}", number_of(step, "dscp")) : "";
}

std::string step_action_text(const json &action) {
    const std::string name = string_of(action, "action");
    if (action.contains("ports")) {
        return name + " " + port_list(action["ports"]);
    }
    return action.contains("value") ? fmt::format("{} {}", name, number_of(action, "value")) : name;
}

std::string step_rule_text(const json &step) {
    std::vector<std::string> actions;
    for (const json &action : step["actions"]) {
        actions.push_back(step_action_text(action));
    }
    return fmt::format("rule {}: {}", number_of(step, "entry"), actions.empty() ? "no action" : joined(actions, ", "));
}

std::string limit_text(const std::string &limit, const json &step) {
    return limit + (step["within"].get<bool>() ? ": within" : ": over");
}

std::string source_text(const json &step) {
    const std::string text = "source " + text_of<chip::Learned>(step, "learned");
    return step.contains("why") ? text + ": " + text_of<chip::NotLearned>(step, "why") : text;
}

std::string destination_text(const json &step) {
    std::string text = "destination " + text_of<chip::Found>(step, "found");
    if (step.contains("port")) {
        text += " " + port_name(number_of(step, "port"));
    } else if (step.contains("trunk")) {
        text += " " + std::to_string(number_of(step, "trunk"));
    }
    return step.value("static", false) ? text + " (static)" : text;
}

std::string drop_text(const std::string &word) {
    for (size_t drop = 0; drop < chip::kDropReasons; ++drop) {
        const chip::Wording &row = chip::wording(static_cast<chip::Drop>(drop));
        if (word == row.word) {
            return row.text;
        }
    }
    return word;
}

struct StepText {
    const char *name;
    std::string (*text)(const json &step);
};

constexpr StepText kStepTexts[] = {
    {"in", in_text},
    {"ingress_limit", [](const json &step) { return limit_text("ingress limit", step); }},
    {"cpu_tag", cpu_tag_text},
    {"header", header_text},
    {"attack_filter", [](const json & /*step*/) { return std::string{"no attack"}; }},
    {"vlan",
     [](const json &step) {
         return fmt::format("VLAN {}: {}", number_of(step, "vid"), text_of<chip::ChosenBy>(step, "by"));
     }},
    {"priority",
     [](const json &step) {
         return fmt::format("priority {}: {}{}", number_of(step, "priority"), text_of<chip::ChosenBy>(step, "by"),
                            dscp_text(step));
     }},
    {"rule", step_rule_text},
    {"no_rule", [](const json &step) { return "no rule matches: " + text_of<chip::MissAction>(step, "action"); }},
    {"meter", [](const json &step) { return limit_text("meter " + std::to_string(number_of(step, "meter")), step); }},
    {"changed",
     [](const json &step) {
         return fmt::format("by rules: VLAN {}, priority {}{}", number_of(step, "vid"), number_of(step, "priority"),
                            dscp_text(step));
     }},
    {"cpu_alone", [](const json &step) { return "for the CPU alone: " + text_of<chip::CpuReason>(step, "reason"); }},
    {"member", [](const json &step) { return fmt::format("the port is a member of VLAN {}", number_of(step, "vid")); }},
    {"spanning_tree", [](const json &step) { return "spanning tree: " + text_of<chip::StpState>(step, "state"); }},
    {"source", source_text},
    {"destination", destination_text},
    {"storm_limit", [](const json &step) { return limit_text("storm limit for " + string_of(step, "type"), step); }},
    {"way", [](const json &step) { return text_of<chip::Way>(step, "way"); }},
    {"dropped",
     [](const json &step) {
         return "dropped: " + string_of(step, "reason") + ": " + drop_text(string_of(step, "reason"));
     }},
};

std::string step_text(const json &step) {
    for (const StepText &row : kStepTexts) {
        if (step["step"] == row.name) {
            return row.text(step);
        }
    }
    return string_of(step, "step");
}

std::string reason_text(const json &row) {
    const auto &lost = chip::Wordings<chip::Lost>::kRows;
    const bool is_lost =
        std::any_of(lost.begin(), lost.end(), [&](const auto &each) { return row["reason"] == each.word; });
    return is_lost ? text_of<chip::Lost>(row, "reason") : text_of<chip::Unsent>(row, "reason");
}

/** What is said of a port, without its number. */
std::string fate_text(const json &row) {
    if (row["fate"] == "not") {
        return reason_text(row);
    }
    std::string text = text_of<chip::Form>(row, "form");
    text += row["form"] == "tagged" ? " " + tag_text(row["tag"]) : "";
    text += fmt::format(", queue {}", number_of(row, "queue"));
    text += row["fate"] == "queued" ? ", " + text_of<chip::Fate>(row, "fate") : "";
    if (row.contains("trunk")) {
        text +=
            fmt::format(", chosen in trunk {} by hash {:#010x}", number_of(row, "trunk"), row["hash"].get<uint32_t>());
    }
    return text;
}

std::string mirror_text(const json &row) {
    return text_of<chip::Origin>(row, "origin") + ", " + fate_text(row);
}

struct Group {
    std::string text;
    json ports;
};

/** Ports of the same fate together, in the order of the first of them. A dropped frame is for no port at all. */
std::vector<Group> groups_of(const json &account, bool are_sent) {
    const std::string not_wanted = chip::wording(chip::Unsent::kNotWanted).word;
    const bool is_dropped = account.contains("drop");
    std::vector<Group> groups;
    for (const json &row : account["ports"]) {
        if ((row["fate"] != "not") != are_sent || (is_dropped && row.value("reason", "") == not_wanted)) {
            continue;
        }
        const std::string text = fate_text(row);
        auto found = std::find_if(groups.begin(), groups.end(), [&](const Group &group) { return group.text == text; });
        if (found == groups.end()) {
            found = groups.insert(groups.end(), {text, json::array()});
        }
        found->ports.push_back(row["port"]);
    }
    return groups;
}

std::string show_groups(const char *title, const std::vector<Group> &groups) {
    std::string text;
    for (const Group &group : groups) {
        text += fmt::format("  {:<8}  {} {}: {}\n", text.empty() ? title : "",
                            group.ports.size() == 1 ? "port" : "ports", port_list(group.ports), group.text);
    }
    return text;
}

std::string show_copies(const json &rows) {
    std::string text;
    for (const json &row : rows) {
        text += fmt::format("  {:<8}  port {}: {}\n", text.empty() ? "mirror" : "", port_name(row), mirror_text(row));
    }
    return text;
}

/** The step of that name, or null. */
const json *find_step(const json &account, const char *name) {
    const json &steps = account["steps"];
    const auto found = std::find_if(steps.begin(), steps.end(), [&](const json &step) { return step["step"] == name; });
    return found == steps.end() ? nullptr : &*found;
}

std::string outcome(const json &account) {
    if (account.contains("drop")) {
        return "dropped: " + string_of(account, "drop");
    }
    json sent = json::array();
    std::string lost;
    for (const json &row : account["ports"]) {
        if (row["fate"] != "not") {
            sent.push_back(row["port"]);
        } else if (row.contains("form")) {
            lost += fmt::format(", port {} {}", port_name(row), string_of(row, "reason"));
        }
    }
    return "to " + port_list(sent) + lost;
}

}  // namespace

std::string account_text(const json &account) {
    std::string text;
    for (const json &step : account["steps"]) {
        text += (text.empty() ? "" : "  ") + step_text(step) + "\n";
    }
    return text + show_groups("sent", groups_of(account, true)) + show_copies(account["mirrors"]) +
           show_groups("not sent", groups_of(account, false));
}

void add_texts(json &account) {
    const auto add = [&](const char *list, std::string (*text)(const json &)) {
        for (json &each : account[list]) {
            each["text"] = text(each);
        }
    };
    add("steps", step_text);
    add("ports", fate_text);
    add("mirrors", mirror_text);
}

std::string account_line(const json &account) {
    std::string text = fmt::format("{:>12.6f}  port {:<3}  ", account["time"].get<double>(), port_name(account));
    if (const json *header = find_step(account, "header")) {
        text += fmt::format("{} > {} {:#06x}  ", string_of(*header, "source"), string_of(*header, "destination"),
                            number_of(*header, "type"));
    }
    if (account.contains("vid")) {
        text += fmt::format("VLAN {}  ", number_of(account, "vid"));
    }
    return text + fmt::format("{} octets  {}\n", number_of(account["steps"][0], "octets"), outcome(account));
}

}  // namespace vdevice::inspect
