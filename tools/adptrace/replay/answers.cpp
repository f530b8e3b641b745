// What the library calls is compared with what it called when it was recorded, and answered.
#include <cstring>
#include <nlohmann/json.hpp>

#include "calls/json_memory.h"
#include "tools/adptrace/replay/replay.h"

namespace adptrace::replay {

namespace {

using calls::CallId;
using nlohmann::json;

constexpr size_t kTextsKept = 16;
constexpr uint32_t kNarrowWord = 32;

uint32_t narrower_word(const Header &header) {
    return sizeof(uintptr_t) * 8 == kNarrowWord ? kNarrowWord : header.word_bits;
}

/** Gives memory that a call only writes the content that it had: it may be left as it is. */
void prepare(std::span<const calls::Param> params, const calls::Blocks &blocks, const json &arguments) {
    json contents = json::object();
    for (size_t index = 0; index < params.size(); ++index) {
        const calls::Param &param = params[index];
        const calls::Block &block = blocks[index];
        if (param.direction != calls::Direction::kOut || block.at == nullptr) {
            continue;
        }
        if (const auto found = arguments.find(param.name); found != arguments.end() && !found->is_null()) {
            contents[param.name] = *found;
        } else {
            std::memset(const_cast<void *>(block.at), 0, block.count * param.element.size);
        }
    }
    calls::store(params, blocks, contents);
}

}  // namespace

int64_t Replay::imported_call(CallId id, const void *const *arguments) {
    try {
        return is_stopped() ? no_answer(id) : answer(id, arguments);
    } catch (const std::exception &error) {  // no exception may pass through the library
        stop(*levels_.back().call, std::string(calls::call(id).name) + ": " + error.what());
        return no_answer(id);
    }
}

int64_t Replay::answer(CallId id, const void *const *arguments) {
    ++outcome().driver_calls;
    const auto params = params_of(id);
    const calls::Blocks blocks = calls::blocks_of(params, arguments);
    const json now = arguments_now(params, blocks);
    const Call *const call = take_next(calls::call(id).name, call_text(calls::call(id).name, now));
    if (is_stopped()) {
        return no_answer(id);
    }
    if (call == nullptr) {
        return driver() == nullptr ? no_answer(id) : driver()->ask(id, arguments);
    }
    const json recorded = arguments_of(*call);
    json expected = recorded;
    words().replace(params, expected);
    if (const auto found =
            difference_of_arguments(call->name, params, expected, now, narrower_word(recording().header()))) {
        differ(*call, "the argument " + found->where, found->recorded, found->now);
    }
    prepare(params, blocks, recorded);
    return is_stopped() ? no_answer(id) : answer_known(*call, id, arguments, blocks);
}

int64_t Replay::answer_known(const Call &call, CallId id, const void *const *arguments, const calls::Blocks &blocks) {
    if (driver() == nullptr) {
        return answer_as_recorded(call, id, blocks);
    }
    json outputs;
    const int64_t result = ask(*driver(), id, arguments, blocks, outputs);
    if (call.has_returned) {
        compare(call, params_of(id), outputs, result_now(calls::call(id).result, nullptr, result));
    }
    return result;
}

int64_t Replay::answer_as_recorded(const Call &call, CallId id, const calls::Blocks &blocks) {
    if (!call.has_returned) {
        return no_answer(id);
    }
    calls::store(params_of(id), blocks, outputs_of(call));
    const json result = result_of(call);
    if (calls::call(id).result != calls::Result::kText || !result.is_string()) {
        return number_of(result);
    }
    texts_.push_back(result.get<std::string>());
    if (texts_.size() > kTextsKept) {
        texts_.pop_front();
    }
    return static_cast<int64_t>(reinterpret_cast<intptr_t>(texts_.back().c_str()));
}

const Call *Replay::take_next(std::string_view name, const std::string &now) {
    Level &level = levels_.back();
    for (size_t place = level.next; place < level.inner->size(); ++place) {
        const Call &call = recording().calls()[(*level.inner)[place]];
        if (call.name == name) {
            report_missing(level, place, now);
            level.next = place + 1;
            return &call;
        }
    }
    ++level.surplus;
    if (level.next == level.inner->size()) {
        differ(*level.call, "the number of calls within it", kNoCall, now);
    } else {
        const Call &next = recording().calls()[(*level.inner)[level.next]];
        differ(next, "the call", call_text(next.name, arguments_of(next)), now);
    }
    return nullptr;
}

void Replay::report_missing(Level &level, size_t end, const std::string &now) {
    // Each call that was made instead of one of them has been reported with it.
    for (size_t place = level.next + level.surplus; place < end; ++place) {
        const Call &call = recording().calls()[(*level.inner)[place]];
        differ(call, "the call", call_text(call.name, arguments_of(call)), now);
    }
    level.surplus = 0;
}

}  // namespace adptrace::replay
