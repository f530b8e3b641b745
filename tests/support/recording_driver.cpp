// The recording driver: scripts, failures and the trace.
#include "tests/support/recording_driver.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "calls/describe.h"
#include "tests/support/trace_file.h"
#include "tests/support/trace_text.h"

namespace recording {

using calls::Call;
using calls::CallId;
using calls::Param;

namespace {

size_t require_param(CallId id, std::string_view name) {
    const Call &call = calls::call(id);
    const auto index = calls::find_param(call, name);
    if (!index) {
        throw std::logic_error(std::string(call.name) + " has no parameter '" + std::string(name) + "'");
    }
    return *index;
}

CallId require_call(std::string_view name) {
    const auto id = calls::find_call(name);
    if (!id) {
        throw std::logic_error("no imported call is named '" + std::string(name) + "'");
    }
    return *id;
}

}  // namespace

const char *Arguments::call_name() const {
    return calls::call(id_).name;
}

int64_t Arguments::number(std::string_view name) const {
    const size_t index = require_param(id_, name);
    const Param &param = calls::call(id_).params[index];
    const void *at = calls::target(param, arguments_[index]);
    return at == nullptr ? 0 : calls::load(param.element.kind, at);
}

std::span<const uint8_t> Arguments::bytes(std::string_view name) const {
    const size_t index = require_param(id_, name);
    const Call &call = calls::call(id_);
    const void *at = calls::target(call.params[index], arguments_[index]);
    if (at == nullptr) {
        return {};
    }
    return {static_cast<const uint8_t *>(at),
            calls::extent(call.params, index, arguments_) * call.params[index].element.size};
}

void *Arguments::pointer(std::string_view name) const {
    const size_t index = require_param(id_, name);
    if (!calls::call(id_).params[index].is_pointer()) {
        throw std::logic_error(std::string(name) + " is not a pointer");
    }
    return *static_cast<void *const *>(arguments_[index]);
}

const char *Arguments::text(std::string_view name) const {
    if (!calls::call(id_).params[require_param(id_, name)].is_text()) {
        throw std::logic_error(std::string(name) + " is not text");
    }
    return static_cast<const char *>(pointer(name));
}

Script &Script::returns(int32_t result) {
    result_ = result;
    return *this;
}

Script &Script::returns_text(const char *text) {
    result_ = static_cast<int64_t>(reinterpret_cast<intptr_t>(text));
    return *this;
}

size_t Script::output_index(std::string_view output) const {
    const size_t index = require_param(id_, output);
    if (!calls::call(id_).params[index].is_written()) {
        throw std::logic_error(std::string(calls::call(id_).name) + " only reads '" + std::string(output) + "'");
    }
    return index;
}

Script &Script::sets_elements(std::string_view output, const std::vector<int64_t> &elements) {
    const auto &element = calls::call(id_).params[output_index(output)].element;
    if (element.kind == calls::Kind::kStruct) {
        throw std::logic_error(std::string(output) + " is a struct: use sets_object()");
    }
    const size_t size = element.size;
    std::vector<uint8_t> bytes(elements.size() * size);
    for (size_t index = 0; index < elements.size(); ++index) {
        calls::store(element.kind, &bytes[index * size], elements[index]);
    }
    return sets_bytes(output, bytes);
}

Script &Script::sets(std::string_view output, std::initializer_list<uint32_t> elements) {
    return sets_elements(output, std::vector<int64_t>(elements.begin(), elements.end()));
}

Script &Script::sets(std::string_view output, const std::vector<uint32_t> &elements) {
    return sets_elements(output, std::vector<int64_t>(elements.begin(), elements.end()));
}

Script &Script::sets_bytes(std::string_view output, std::span<const uint8_t> bytes) {
    const size_t index = output_index(output);
    const Param &param = calls::call(id_).params[index];
    if (param.counted_by == calls::kNotCounted && bytes.size() > param.extent * param.element.size) {
        throw std::logic_error(std::string(output) + " does not hold that much");
    }
    outputs_[index].assign(bytes.begin(), bytes.end());
    return *this;
}

Script &Script::sets_bytes(std::string_view output, std::initializer_list<uint8_t> bytes) {
    return sets_bytes(output, std::span(bytes.begin(), bytes.size()));
}

Script &Script::does(std::function<int32_t(Arguments &)> action) {
    action_ = std::move(action);
    return *this;
}

Script &Script::once() {
    return queue_.emplace_back(id_);
}

void Script::write_outputs(const void *const *arguments) const {
    const Call &call = calls::call(id_);
    for (const auto &[index, bytes] : outputs_) {
        void *to = *static_cast<void *const *>(arguments[index]);
        const size_t room = extent(call.params, index, arguments) * call.params[index].element.size;
        if (to != nullptr && !bytes.empty()) {
            std::memcpy(to, bytes.data(), std::min(bytes.size(), room));
        }
    }
}

namespace {

// The result of a call without a script.
int64_t default_result(CallId id, const void *const *arguments) {
    constexpr size_t kMacTextSize = sizeof "aa:bb:cc:dd:ee:ff";
    constexpr int64_t kQueued = 1;
    static char mac_text[kMacTextSize];
    if (id == CallId::equeue_send_ucast) {
        return kQueued;
    }
    if (id == CallId::onu_mac2str) {
        const auto *mac = *static_cast<const uint8_t *const *>(arguments[0]);
        if (mac == nullptr) {
            return 0;
        }
        std::snprintf(mac_text, sizeof mac_text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3],
                      mac[4], mac[5]);
        return static_cast<int64_t>(reinterpret_cast<intptr_t>(mac_text));
    }
    return 0;
}

}  // namespace

int64_t Script::run(const void *const *arguments) {
    if (!queue_.empty()) {
        Script next = std::move(queue_.front());
        queue_.pop_front();
        return next.run(arguments);
    }
    write_outputs(arguments);
    if (action_) {
        Arguments named(id_, arguments);
        return action_(named);
    }
    return result_ ? *result_ : default_result(id_, arguments);
}

void Driver::reset() {
    *this = Driver();
}

Script &Driver::on(std::string_view name) {
    const CallId id = require_call(name);
    return scripts_.try_emplace(id, id).first->second;
}

void Driver::fail_call(size_t k, int32_t result) {
    failing_call_ = {count_ + k, result};
    failing_call_writes_ = false;
}

void Driver::fail_call_after_writing(size_t k, int32_t result) {
    fail_call(k, result);
    failing_call_writes_ = true;
}

void Driver::fail_every(std::string_view name, int32_t result) {
    failing_[require_call(name)] = result;
}

void Driver::fail_nothing() {
    failing_.clear();
    failing_call_.reset();
}

void Driver::note(std::string line) {
    if (recording_) {
        if (trace_file::is_enabled()) {
            trace_file::write(line);
        }
        trace_.push_back(std::move(line));
    }
}

size_t Driver::count(std::string_view name) const {
    const auto found = counts_.find(require_call(name));
    return found == counts_.end() ? 0 : found->second;
}

std::optional<int32_t> Driver::failure(CallId id) {
    if (failing_call_ && failing_call_->first == count_ - 1) {
        return failing_call_->second;
    }
    const auto found = failing_.find(id);
    return found == failing_.end() ? std::nullopt : std::optional(found->second);
}

int64_t Driver::answer(CallId id, const void *const *arguments, const std::function<std::string()> &describe) {
    if (!recording_ || !trace_file::is_enabled()) {
        return give_answer(id, arguments, describe);
    }
    // The arguments are described first: an action may change what they address.
    const std::string line = id == CallId::Log_logging_func ? describe() : trace_text::describe_call(id, arguments);
    const int64_t result = give_answer(id, arguments, describe);
    trace_file::write(line + " -> " + trace_text::describe_result(id, arguments, result));
    return result;
}

int64_t Driver::give_answer(CallId id, const void *const *arguments, const std::function<std::string()> &describe) {
    ++count_;
    ++counts_[id];
    if (recording_) {
        trace_.push_back(describe());
    }
    if (const auto result = failure(id)) {
        const auto script = scripts_.find(id);
        if (failing_call_writes_ && script != scripts_.end()) {
            script->second.write_outputs(arguments);
        }
        // A call that returns text fails with null.
        return calls::call(id).result == calls::Result::kText ? 0 : *result;
    }
    const auto script = scripts_.find(id);
    return script == scripts_.end() ? default_result(id, arguments) : script->second.run(arguments);
}

Driver &driver() {
    static Driver instance;
    return instance;
}

}  // namespace recording
