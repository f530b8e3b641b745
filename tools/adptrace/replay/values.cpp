// Compares what calls were given and gave.
#include "tools/adptrace/replay/values.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace adptrace::replay {

namespace {

using calls::Kind;
using calls::Param;
using nlohmann::json;

constexpr size_t kMostText = 400;
constexpr size_t kShortArray = 32;      // which is shown whole
constexpr size_t kThreadOfMessage = 1;  // the word of an event that is the sender's thread
constexpr uint32_t kNarrow = 32;
constexpr char kUnchanged[] = "unchanged";

/** What differs from machine to machine and from time to time. */
struct Local {
    std::string_view call;
    std::string_view member;
};
constexpr Local kLocals[] = {
    {"equeue_send_ucast", "queue"},
    {"adp_get_port_last_change", "seconds"},
    {"Log_logging_func", "format"},  // a program that stands before the logger hands on the text alone
};
constexpr std::string_view kLocalResults[] = {"adp_pkt_init", "get_nic_index"};

bool is_local(std::string_view call, std::string_view member) {
    return std::any_of(std::begin(kLocals), std::end(kLocals),
                       [&](const Local &local) { return local.call == call && local.member == member; });
}

const json &member_of(const json &object, std::string_view name) {
    static const json none;
    const auto found = object.find(name);
    return found == object.end() ? none : *found;
}

bool has_only_simple(const json &array) {
    return std::none_of(array.begin(), array.end(), [](const json &element) { return element.is_structured(); });
}

std::optional<Difference> difference_of(const std::string &where, const json &recorded, const json &now);

std::optional<Difference> difference_of_arrays(const std::string &where, const json &recorded, const json &now) {
    if (recorded.size() != now.size() || (now.size() <= kShortArray && has_only_simple(now))) {
        return recorded == now ? std::nullopt : std::optional(Difference{where, text_of(recorded), text_of(now)});
    }
    for (size_t index = 0; index < now.size(); ++index) {
        if (auto found = difference_of(where + "[" + std::to_string(index) + "]", recorded[index], now[index])) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<Difference> difference_of_objects(const std::string &where, const json &recorded, const json &now) {
    for (const auto &[name, value] : now.items()) {
        const std::string place = std::string(where).append(".").append(name);
        if (auto found = difference_of(place, member_of(recorded, name), value)) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<Difference> difference_of(const std::string &where, const json &recorded, const json &now) {
    if (recorded.is_array() && now.is_array()) {
        return difference_of_arrays(where, recorded, now);
    }
    if (recorded.is_object() && now.is_object()) {
        return difference_of_objects(where, recorded, now);
    }
    if (recorded == now) {
        return std::nullopt;
    }
    return Difference{where, text_of(recorded), text_of(now)};
}

void narrow(json &value) {
    if (value.is_array()) {
        std::for_each(value.begin(), value.end(), narrow);
    } else if (value.is_number_unsigned() || value.is_number_integer()) {
        value = static_cast<uint32_t>(value.get<uint64_t>());
    }
}

/** An argument as both machines have it; of memory that the call only writes, whether there is any. */
json comparable(std::string_view call, const Param &param, const json &arguments, uint32_t word_bits) {
    json value = member_of(arguments, param.name);
    if (param.direction == calls::Direction::kOut) {
        return arguments.contains(param.name) && value.is_null() ? json() : json("an address");
    }
    if (param.element.kind == Kind::kWord && word_bits == kNarrow) {
        narrow(value);
    }
    if (call == "equeue_send_ucast" && value.is_array() && value.size() > kThreadOfMessage) {
        value[kThreadOfMessage] = 0;
    }
    return value;
}

bool is_word_output(const Param &param) {
    return param.is_written() && param.element.kind == Kind::kWord;
}

}  // namespace

void Words::learn(std::span<const Param> params, const json &recorded, const json &now) {
    for (const Param &param : params) {
        const json &one = member_of(recorded, param.name);
        const json &other = member_of(now, param.name);
        if (is_word_output(param) && one.is_number() && other.is_number()) {
            now_[{param.name, one.get<uint64_t>()}] = other.get<uint64_t>();
        }
    }
}

void Words::replace(std::span<const Param> params, json &arguments) const {
    for (const Param &param : params) {
        const auto argument = arguments.find(param.name);
        if (param.is_pointer() || param.element.kind != Kind::kWord || argument == arguments.end() ||
            !argument->is_number()) {
            continue;
        }
        const auto found = now_.find({param.name, argument->get<uint64_t>()});
        if (found != now_.end()) {
            *argument = found->second;
        }
    }
}

std::string text_of(const json &value) {
    std::string text = value.dump(-1, ' ', true, json::error_handler_t::replace);
    if (text.size() > kMostText) {
        text.resize(kMostText);
        text += "..";
    }
    return text;
}

std::string call_text(std::string_view name, const json &arguments) {
    return std::string(name) + " " + text_of(arguments);
}

json arguments_now(std::span<const Param> params, const calls::Blocks &blocks) {
    std::string text;
    calls::append_arguments(text, params, blocks);
    return json::parse(text);
}

json outputs_now(std::span<const Param> params, const calls::Blocks &blocks, const calls::Blocks &before) {
    std::string text;
    calls::append_outputs(text, params, blocks, before);
    return json::parse(text);
}

json result_now(calls::Result kind, const calls::Struct *layout, int64_t result) {
    std::string text;
    calls::append_result(text, kind, layout, result);
    return json::parse(text);
}

std::optional<Difference> difference_of_arguments(std::string_view call, std::span<const Param> params,
                                                  const json &recorded, const json &now, uint32_t word_bits) {
    for (const Param &param : params) {
        if (is_local(call, param.name)) {
            continue;
        }
        json one = comparable(call, param, recorded, word_bits);
        json other = comparable(call, param, now, word_bits);
        if (auto found = difference_of(param.name, one, other)) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<Difference> difference_of_outputs(std::string_view call, std::span<const Param> params,
                                                const json &recorded, const json &now) {
    for (const Param &param : params) {
        if (is_word_output(param) || is_local(call, param.name)) {
            continue;
        }
        const bool was_changed = recorded.contains(param.name);
        if (was_changed && now.contains(param.name)) {
            if (auto found = difference_of(param.name, recorded[param.name], now[param.name])) {
                return found;
            }
        } else if (was_changed || now.contains(param.name)) {
            return Difference{param.name, was_changed ? text_of(recorded[param.name]) : kUnchanged,
                              was_changed ? kUnchanged : text_of(now[param.name])};
        }
    }
    return std::nullopt;
}

std::optional<Difference> difference_of_results(std::string_view call, const json &recorded, const json &now) {
    if (std::find(std::begin(kLocalResults), std::end(kLocalResults), call) != std::end(kLocalResults)) {
        return std::nullopt;
    }
    return difference_of("result", recorded, now);
}

}  // namespace adptrace::replay
