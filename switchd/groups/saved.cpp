// The saved groups as text: a line "group NUMBER", or "member" and thirteen numbers.
#include "switchd/groups/saved.h"

#include <adp/agg.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace switchd {
namespace {

constexpr ptrdiff_t kMacWord = 3;
constexpr ptrdiff_t kMacOctets = 6;
constexpr size_t kMemberWords = 13;

std::vector<std::string_view> pieces(std::string_view text, char separator) {
    std::vector<std::string_view> list;
    while (!text.empty()) {
        const size_t end = std::min(text.find(separator), text.size());
        list.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return list;
}

/** The words behind the first one as numbers; none if one is not below its limit. */
std::vector<uint32_t> numbers_of(const std::vector<std::string_view> &words) {
    std::vector<uint32_t> numbers;
    for (size_t i = 1; i < words.size(); ++i) {
        uint32_t number = 0;
        const char *end = words[i].data() + words[i].size();
        const auto [rest, error] = std::from_chars(words[i].data(), end, number);
        if (error != std::errc{} || rest != end || number > UINT16_MAX) {
            return {};
        }
        numbers.push_back(number);
    }
    return numbers;
}

bool is_group(uint32_t number) {
    return number >= 1 && number <= ADP_AGG_GROUPS;
}

/** A port, a group, and the partner: its system's priority and address, key, port priority, port, state. */
bool read_member(const std::vector<uint32_t> &numbers, SavedGroups &saved) {
    if (numbers.size() != kMemberWords || numbers[0] < 1 || numbers[0] > ADP_USER_PORTS || !is_group(numbers[1])) {
        return false;
    }
    const auto is_octet = [](uint32_t number) { return number <= UINT8_MAX; };
    const auto mac = numbers.begin() + kMacWord;
    if (!std::all_of(mac, mac + kMacOctets, is_octet) || !is_octet(numbers.back())) {
        return false;
    }
    SavedMember &member = saved.members[numbers[0]];
    member.group = numbers[1];
    lacp::Info &partner = member.partner;
    partner.system.priority = static_cast<uint16_t>(numbers[2]);
    std::transform(mac, mac + kMacOctets, partner.system.mac.begin(),
                   [](uint32_t number) { return static_cast<uint8_t>(number); });
    const auto rest = mac + kMacOctets;
    partner.key = static_cast<uint16_t>(rest[0]);
    partner.port_priority = static_cast<uint16_t>(rest[1]);
    partner.port = static_cast<uint16_t>(rest[2]);
    partner.state = static_cast<uint8_t>(rest[3]);
    return true;
}

bool read_line(std::string_view line, SavedGroups &saved) {
    const auto words = pieces(line, ' ');
    const auto numbers = numbers_of(words);
    if (numbers.size() == 1 && words[0] == "group" && is_group(numbers[0])) {
        saved.groups.insert(numbers[0]);
        return true;
    }
    return !words.empty() && words[0] == "member" && read_member(numbers, saved);
}

}  // namespace

std::string text_of(const SavedGroups &saved) {
    std::string text;
    for (const uint32_t group : saved.groups) {
        text += "group " + std::to_string(group) + "\n";
    }
    for (const auto &[port, member] : saved.members) {
        const lacp::Info &partner = member.partner;
        text += "member " + std::to_string(port) + " " + std::to_string(member.group) + " " +
                std::to_string(partner.system.priority);
        for (const uint8_t octet : partner.system.mac) {
            text += " " + std::to_string(octet);
        }
        text += " " + std::to_string(partner.key) + " " + std::to_string(partner.port_priority) + " " +
                std::to_string(partner.port) + " " + std::to_string(partner.state) + "\n";
    }
    return text;
}

std::optional<SavedGroups> saved_of(std::string_view text) {
    SavedGroups saved;
    for (const std::string_view line : pieces(text, '\n')) {
        if (!read_line(line, saved)) {
            return std::nullopt;
        }
    }
    return saved;
}

}  // namespace switchd
