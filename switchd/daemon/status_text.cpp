// A table for each subject.
#include "switchd/daemon/status_text.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <nlohmann/json.hpp>

#include "switchd/daemon/table_text.h"
#include "text/printable.h"
#include "text/suggest.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using nlohmann::json;
using table_text::Row, table_text::rows_in, table_text::table, table_text::word_in;

Row words_in(const json &object, std::initializer_list<const char *> keys) {
    Row row;
    std::transform(keys.begin(), keys.end(), std::back_inserter(row),
                   [&](const char *key) { return word_in(object, key); });
    return row;
}

bool is_set(const json &object, const char *key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() && found->get<bool>();
}

std::string state_text(const json &status) {
    const json &state = status.at("state");
    std::string text = is_set(state, "synced") ? "in sync with the kernel" : "not in sync with the kernel yet";
    if (const auto since = state.find("since_ms"); since != state.end() && since->is_number_integer()) {
        constexpr int64_t kMillisecondsInASecond = 1000;
        text += ", for " + std::to_string(since->get<int64_t>() / kMillisecondsInASecond) + " s";
    }
    return text + "; read again " + word_in(state, "resyncs") + " times\n";
}

/** Names, with the tag's mark and with the state where it is another one than forwarding. */
std::string bridge_ports(const json &bridge) {
    std::string text;
    for (const json &port : rows_in(bridge, "ports")) {
        const std::string state = word_in(port, "state");
        text += (text.empty() ? "" : " ") + word_in(port, "name") + (is_set(port, "tagged") ? " (tagged)" : "") +
                (state == "forwarding" ? "" : " (" + state + ")");
    }
    return text.empty() ? "-" : text;
}

std::string bridges_text(const json &status) {
    std::vector<Row> rows;
    for (const json &bridge : rows_in(status, "bridges")) {
        rows.push_back(words_in(bridge, {"name", "vid", "stp", "snooping"}));
        rows.back().push_back(bridge_ports(bridge));
    }
    return table({"BRIDGE", "VLAN", "STP", "SNOOPING", "PORTS"}, rows);
}

std::string dot1x_word(const json &port) {
    const auto dot1x = port.find("dot1x");
    if (dot1x == port.end() || !dot1x->is_object()) {
        return "-";
    }
    if (word_in(*dot1x, "control") == "port") {
        return is_set(*dot1x, "open") ? "open" : "closed";
    }
    return "let in: " + word_in(*dot1x, "stations");
}

std::string ports_text(const json &status) {
    std::vector<Row> rows;
    for (const json &port : rows_in(status, "ports")) {
        rows.push_back(
            words_in(port, {"name", "up", "link", "speed", "duplex", "bridge", "vid", "rx_frames", "tx_frames"}));
        rows.back().push_back(dot1x_word(port));
    }
    return table({"PORT", "UP", "LINK", "MB/S", "DUPLEX", "BRIDGE", "VLAN", "RX FRAMES", "TX FRAMES", "802.1X"}, rows);
}

/** What the switch refuses of a group. */
std::string group_faults(const json &status) {
    std::string lines;
    for (const json &group : rows_in(status, "groups")) {
        const std::string fault = word_in(group, "fault");
        lines += fault == "-" ? "" : word_in(group, "name") + ": " + fault + "\n";
    }
    return lines;
}

std::string groups_text(const json &status) {
    std::vector<Row> rows;
    for (const json &group : rows_in(status, "groups")) {
        rows.push_back(words_in(group, {"name", "mode", "up", "partner"}));
        rows.back().insert(rows.back().end(), {"", "", "", ""});
        for (const json &member : rows_in(group, "members")) {
            const Row words = words_in(member, {"name", "state", "actor", "partner"});
            rows.push_back({"", "", "", ""});
            rows.back().insert(rows.back().end(), words.begin(), words.end());
        }
    }
    return table({"GROUP", "MODE", "UP", "PARTNER", "MEMBER", "STATE", "ACTOR", "PARTNER"}, rows) +
           group_faults(status);
}

std::string remarks_text(const json &status) {
    std::vector<Row> rows;
    for (const json &remark : rows_in(status, "not_in_hardware")) {
        rows.push_back(words_in(remark, {"subject", "text"}));
    }
    return table({"NOT IN HARDWARE", "WHY"}, rows);
}

/** "rx_frames" is a heading "RX FRAMES". */
std::string heading_of(std::string key) {
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return c == '_' ? ' ' : static_cast<char>(std::toupper(c)); });
    return key;
}

std::string frames_text(const json &status) {
    std::vector<Row> rows;
    for (const auto &[key, value] : status.at("frames").items()) {
        rows.push_back({heading_of(text::on_one_line(key)), table_text::word_of(value)});
    }
    return table({"FRAMES OF THE CPU", "COUNT"}, rows);
}

/** All counters of one port, or a few of each. */
std::string statistics_text(const json &answer) {
    const std::vector<json> ports = rows_in(answer, "statistics");
    std::vector<Row> rows;
    if (ports.size() == 1) {
        for (const auto &[key, value] : ports.front().items()) {
            rows.push_back({heading_of(text::on_one_line(key)), table_text::word_of(value)});
        }
        return table({"COUNTER", "VALUE"}, rows);
    }
    for (const json &port : ports) {
        rows.push_back(
            words_in(port, {"name", "rx_frames", "rx_octets", "rx_dropped", "tx_frames", "tx_octets", "tx_too_long"}));
    }
    return table({"PORT", "RX FRAMES", "RX OCTETS", "RX DROPPED", "TX FRAMES", "TX OCTETS", "TX TOO LONG"}, rows);
}

struct Subject {
    const char *name;
    json::value_t kind;
    std::string (*text)(const json &answer);
};

constexpr Subject kSubjects[] = {
    {"state", json::value_t::object, state_text},          {"bridges", json::value_t::array, bridges_text},
    {"ports", json::value_t::array, ports_text},           {"groups", json::value_t::array, groups_text},
    {"frames", json::value_t::object, frames_text},        {"not_in_hardware", json::value_t::array, remarks_text},
    {"statistics", json::value_t::array, statistics_text},
};
constexpr size_t kOfStatus = std::size(kSubjects) - 1;

std::vector<std::string_view> names_of_subjects() {
    std::vector<std::string_view> names;
    std::transform(std::begin(kSubjects), std::begin(kSubjects) + kOfStatus, std::back_inserter(names),
                   [](const Subject &subject) { return subject.name; });
    return names;
}

}  // namespace

std::string subject_names() {
    std::string all;
    for (const std::string_view name : names_of_subjects()) {
        all += (all.empty() ? "" : ", ") + std::string{name};
    }
    return all;
}

void check_subject(const std::vector<std::string> &words) {
    if (words.size() < 2) {
        return;
    }
    const std::vector<std::string_view> names = names_of_subjects();
    if (std::find(names.begin(), names.end(), words[1]) == names.end()) {
        const std::string question = text::did_you_mean(words[1], names, ", ");
        throw vdevice::io::Error{"there is no status of '" + words[1] + "'" +
                                 (question.empty() ? "; 'adp-switchd --help' lists what there is." : question)};
    }
}

json subject_of(const json &status, const std::string &subject) {
    check_subject({"status", subject});
    return {{subject, status.value(subject, json())}};
}

std::string text_of_answer(const json &answer) {
    if (const auto text = answer.find("text"); text != answer.end() && text->is_string()) {
        return text::printable_lines(text->get<std::string>()) + "\n";
    }
    std::string all;
    for (const Subject &subject : kSubjects) {
        const auto found = answer.find(subject.name);
        const std::string text = found == answer.end() || found->type() != subject.kind ? "" : subject.text(answer);
        all += (all.empty() || text.empty() ? "" : "\n") + text;
    }
    return all.empty() && answer.size() == 1 ? "none\n" : all;
}

}  // namespace switchd
