// Goes through the calls of a recording.
#include "tools/adptrace/replay/player.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "calls/json_memory.h"
#include "tools/adptrace/command.h"

namespace adptrace::replay {

namespace {

using calls::CallId;
using nlohmann::json;

std::string name_of(const Call &call) {
    return "call " + std::to_string(call.number) + ", " + std::string(call.name);
}

}  // namespace

Player::Player(const Recording &recording, Driver *driver, const Options &options, Reporter reporter)
    : recording_(recording), driver_(driver), options_(options), reporter_(std::move(reporter)) {
    set_driver(driver);
}

Player::~Player() {
    set_driver(nullptr);
}

Outcome Player::run(const Progress &progress) {
    check_names();
    const auto &calls = recording_.calls();
    for (size_t index = 0; index < calls.size() && !is_stopped_; ++index) {
        const Call &call = calls[index];
        if (call.process != options_.process || !is_played(call)) {
            continue;
        }
        if (is_to_be_left(call)) {
            return outcome_;
        }
        play(index);
        outcome_.last = &call;
        progress(index + 1, calls.size());
    }
    if (!is_stopped_) {
        finish();
    }
    return outcome_;
}

void Player::check_names() const {
    for (const Call &call : recording_.calls()) {
        const bool is_wanted = call.process == options_.process && call.line <= options_.last_line;
        if (is_wanted && call.kind == Call::Kind::kUnknown) {
            throw Refusal("line " + std::to_string(call.line) + ": this adptrace does not know the call '" +
                          std::string(call.name) + "'; a newer one is needed.");
        }
    }
}

bool Player::is_to_be_left(const Call &call) {
    if (call.line > options_.last_line) {
        return true;
    }
    if (call.has_returned || options_.is_to_crash) {
        return false;
    }
    outcome_.reason = place_of(call) + " had not returned, and is not made (--crash makes it).";
    return true;
}

void Player::ask_again(const Call &call) {
    if (driver_ == nullptr) {
        return;  // the recording has the answer
    }
    const CallId id = *calls::find_call(call.name);
    const auto params = params_of(id);
    json arguments = arguments_of(call);
    words_.replace(params, arguments);
    const calls::Memory memory(params, arguments);
    ++outcome_.driver_calls;
    json outputs;
    const int64_t result = ask(*driver_, id, memory.arguments(), memory.blocks(), outputs);
    if (call.has_returned) {
        compare(call, params, outputs, result_now(calls::call(id).result, nullptr, result));
    }
}

void Player::compare(const Call &call, std::span<const calls::Param> params, const json &outputs, const json &result) {
    const json recorded = outputs_of(call);
    if (const auto found = difference_of_results(call.name, result_of(call), result)) {
        differ(call, "the " + found->where, found->recorded, found->now);
    }
    if (const auto found = difference_of_outputs(call.name, params, recorded, outputs)) {
        differ(call, "the output " + found->where, found->recorded, found->now);
    }
    words_.learn(params, recorded, outputs);
}

void Player::differ(const Call &call, const std::string &what, const std::string &recorded, const std::string &now) {
    if (is_stopped_) {
        return;
    }
    ++outcome_.differences;
    is_stopped_ = !options_.is_to_keep_going;
    reporter_(place_of(call) + ": " + what + " differs\n  recorded: " + recorded + "\n  replayed: " + now + "\n");
}

void Player::stop(const Call &call, const std::string &why) {
    if (is_stopped_) {
        return;
    }
    is_stopped_ = true;
    outcome_.reason = place_of(call) + ": " + why;
    outcome_.is_trouble = true;
}

std::string Player::place_of(const Call &call) const {
    std::string place = "line " + std::to_string(call.line) + ": " + name_of(call);
    if (call.within != kNone) {
        place += ", within " + name_of(recording_.calls()[call.within]);
    }
    return place;
}

std::span<const calls::Param> params_of(CallId id) {
    return id == CallId::Log_logging_func ? calls::log_params() : calls::call(id).params;
}

int64_t ask(Driver &driver, CallId id, const void *const *arguments, const calls::Blocks &blocks, json &outputs) {
    const auto params = params_of(id);
    std::vector<uint8_t> storage;
    const calls::Blocks before = calls::copies_of(params, blocks, storage);
    const int64_t result = driver.ask(id, arguments);
    outputs = outputs_now(params, blocks, before);
    return result;
}

}  // namespace adptrace::replay
