// Items, failure rules and loops of plans.
#include "tests/fault_injection/plan_reader.h"

#include <adp/adp.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <numeric>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "calls/call_table.h"

namespace fault_injection {
namespace {

std::string replaced(std::string text, std::string_view what, const std::string &with) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

std::optional<int64_t> number_in(const std::string &text) {
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

int64_t require_number(const std::string &text) {
    const auto number = number_in(text);
    if (!number) {
        throw std::runtime_error("'" + text + "' is not a number");
    }
    return *number;
}

std::vector<std::string> words_of(const std::string &text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

/** Cuts a bracketed part that stands in no other out of the text, and gives what it holds. */
std::string take_bracket(std::string &text, char open) {
    for (size_t at = text.find_first_of("({<"); at != std::string::npos; at = text.find_first_of("({<", at)) {
        const size_t end = closing(text, at);
        if (text[at] == open) {
            std::string inside = text.substr(at + 1, end - at - 1);
            text.erase(at, end - at + 1);
            return inside;
        }
        at = end;
    }
    return "";
}

/** `own`, `102`, `ignored`, `or`, `last`, all also with `before CALL` or `without CALL`. */
Policy policy_of(std::vector<std::string> words) {
    Policy policy;
    constexpr size_t kWithCall = 3;
    if (words.size() == kWithCall && words[1] == "before") {
        policy.until = words.back();
        words.resize(1);
    } else if (words.size() >= kWithCall && words[1] == "without") {
        policy.without.assign(words.begin() + 2, words.end());
        words.resize(1);
    }
    const std::string rule = words.size() == 1 ? words.front() : "";
    if (rule == "last") {
        policy.status = Policy::Status::kOwn;
    } else if (rule == "or") {
        policy.status = Policy::Status::kOred;
    } else if (rule == "own") {
        policy.ends = true;
        policy.status = Policy::Status::kOwn;
    } else if (rule != "ignored") {
        policy.ends = true;
        policy.status = Policy::Status::kFixed;
        policy.fixed = require_number(rule);
    }
    return policy;
}

/** The pieces around the word that stands in no bracket. */
std::vector<std::string> split_at_word(std::string text, const std::string &word) {
    size_t depth = 0;
    const std::string separator = " " + word + " ";
    for (size_t at = 0; at < text.size(); ++at) {
        depth += std::string_view("({<").find(text[at]) != std::string_view::npos ? 1U : 0U;
        depth -= std::string_view(")}>").find(text[at]) != std::string_view::npos ? 1U : 0U;
        if (depth == 0 && text.compare(at, separator.size(), separator) == 0) {
            return {text.substr(0, at), text.substr(at + separator.size())};
        }
    }
    return {text};
}

/** Reads the text of plans for one state. */
class Reader {
  public:
    Reader(const Family &family, const State &state, bool is_after_failure = false)
        : family_(family), state_(state), is_after_failure_(is_after_failure) {}

    /** @p port is what calls on a port must name, empty where the plan does not say. */
    [[nodiscard]] Plan read(const std::string &text, const std::string &port) const {
        Plan plan;
        for (const std::string &piece : split(text, ';')) {
            const Plan items = piece_of(piece, port);
            plan.insert(plan.end(), items.begin(), items.end());
        }
        return plan;
    }

  private:
    [[nodiscard]] Plan piece_of(const std::string &text, const std::string &port) const {
        if (const auto found = family_.definitions.find(text); found != family_.definitions.end()) {
            return read(in_state(found->second, state_), port);
        }
        if (text.back() == ')') {
            if (const auto repeated = loop(text, port)) {
                return *repeated;
            }
        }
        return {item_of(text, port)};
    }

    /** `active(..)`, `configured(..)`, `ports(..)` once for each of them, `64*(..)` so many times. */
    [[nodiscard]] std::optional<Plan> loop(const std::string &text, const std::string &port) const {
        const size_t open = text.find('(');
        const std::string head = text.substr(0, open);
        const std::string body = text.substr(open + 1, text.size() - open - 2);
        if (head == "active" || head == "configured") {
            return each(body, head == "active" ? state_.active_members() : state_.configured_members());
        }
        if (head == "ports") {
            std::vector<uint32_t> all(ADP_USER_PORTS);
            std::iota(all.begin(), all.end(), 1);
            return each(body, all);
        }
        if (head.back() == '*') {
            return times(require_number(head.substr(0, head.size() - 1)), body, port);
        }
        return std::nullopt;
    }

    [[nodiscard]] Plan each(const std::string &body, const std::vector<uint32_t> &members) const {
        Plan plan;
        for (const uint32_t member : members) {
            const std::string port = std::to_string(physical(member));
            const std::string again = std::to_string(physical(static_cast<uint32_t>(physical(member))));
            const Plan items = read(replaced(replaced(body, "$member", std::to_string(member)), "$again", again), port);
            plan.insert(plan.end(), items.begin(), items.end());
        }
        return plan;
    }

    [[nodiscard]] Plan times(int64_t count, const std::string &body, const std::string &port) const {
        Plan plan;
        for (int64_t turn = 0; turn < count; ++turn) {
            const std::string numbered = replaced(body, "$turn", std::to_string(turn));
            const Plan items = read(replaced(numbered, "$next", std::to_string(turn + 1)), port);
            plan.insert(plan.end(), items.begin(), items.end());
        }
        return plan;
    }

    [[nodiscard]] Item item_of(const std::string &text, const std::string &port) const {
        const std::vector<std::string> words = words_of(text);
        const std::string rest = trimmed(text.substr(words.front().size()));
        if (const auto status = number_in(text)) {
            return numbered(Item::Kind::kReturns, *status);
        }
        for (const auto &[word, kind] : {std::pair("returns", Item::Kind::kReturns),
                                         {"keeps", Item::Kind::kKeeps},
                                         {"opens", Item::Kind::kOpens}}) {
            if (words.front() == word) {
                return numbered(kind, require_number(rest));
            }
        }
        Item item;
        if (words.front() == "writes") {
            item.kind = Item::Kind::kWrites;
            item.writes = assignments_of(rest);
            return item;
        }
        if (words.front() == "rules") {
            item.kind = Item::Kind::kRules;
            item.rules.assign(words.begin() + 1, words.end());
            return item;
        }
        if (words.front() == "changes") {
            item = call_of(rest, "");
            item.kind = Item::Kind::kChanges;
            return item;
        }
        return call_of(text, port);
    }

    static Item numbered(Item::Kind kind, int64_t number) {
        Item item;
        item.kind = kind;
        item.number = number;
        return item;
    }

    [[nodiscard]] Item call_of(std::string text, const std::string &port) const {
        Item item;
        item.writes = assignments_of(take_bracket(text, '<'));
        item.arguments = assignments_of(take_bracket(text, '('));
        item.name = text.substr(0, text.find_first_of(" {"));
        if (item.can_fail()) {
            for (const std::string &rule : split_at_word(text.substr(item.name.size()), "else")) {
                item.branches.push_back(branch_of(rule, port));
            }
        }
        name_port(item, port);
        return item;
    }

    [[nodiscard]] Branch branch_of(std::string rule, const std::string &port) const {
        Branch branch;
        branch.then = Reader(family_, state_, true).read(take_bracket(rule, '{'), port);
        const std::vector<std::string> words = words_of(rule);
        // Calls after a failure fail only where all do, and then mostly without consequence.
        branch.policy = is_after_failure_ && words.empty() ? Policy() : policy_of(words);
        return branch;
    }

    static void name_port(Item &item, const std::string &port) {
        const auto id = calls::find_call(item.name);
        const bool named = std::any_of(item.arguments.begin(), item.arguments.end(),
                                       [](const Assignment &argument) { return argument.target == "port"; });
        if (id && !named && !port.empty() && calls::find_param(calls::call(*id), "port")) {
            item.arguments.push_back({"port", port});
        }
    }

    const Family &family_;
    const State &state_;
    bool is_after_failure_;
};

}  // namespace

Plan read_plan(const Family &family, const State &state, const std::string &text, const std::string &port) {
    return Reader(family, state).read(replaced(in_state(text, state), "$port", port), port);
}

bool is_number(const std::string &text) {
    return number_in(text).has_value();
}

std::vector<Assignment> assignments_of(const std::string &text) {
    std::vector<Assignment> assignments;
    for (const std::string &piece : split(text, ',')) {
        const size_t at = piece.find('=');
        if (at == std::string::npos) {
            throw std::runtime_error("'" + piece + "' assigns nothing");
        }
        assignments.push_back({trimmed(piece.substr(0, at)), trimmed(piece.substr(at + 1))});
    }
    return assignments;
}

std::string in_state(const std::string &text, const State &state) {
    std::string result = replaced(text, "$intf", state.interface);
    result = replaced(result, "$hold", std::to_string(state.hold()));
    result = replaced(result, "$group", std::to_string(state.group));
    return replaced(result, "$trunk", std::to_string(static_cast<int64_t>(state.group) - 1));
}

}  // namespace fault_injection
