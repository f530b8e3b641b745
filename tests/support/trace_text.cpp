// Replaces in a call's text what differs between machines and runs.
#include "tests/support/trace_text.h"

#include <pthread.h>

#include <cstring>
#include <vector>

#include "calls/describe.h"

namespace trace_text {

using calls::CallId;

std::string words(const void *bytes, size_t size) {
    std::vector<uint32_t> numbers(size / sizeof(uint32_t));
    std::memcpy(numbers.data(), bytes, numbers.size() * sizeof(uint32_t));
    size_t shown = numbers.size();
    while (shown > 1 && numbers[shown - 1] == 0) {
        --shown;
    }
    std::string text = "[";
    for (size_t index = 0; index < shown; ++index) {
        text += (index == 0 ? "" : ", ") + std::to_string(numbers[index]);
    }
    return text + (shown < numbers.size() ? ", ..]" : "]");
}

namespace {

/** The message's second word is the sender: the thread that makes the call. */
std::string name_thread(std::string text) {
    const std::string id = ", " + std::to_string(static_cast<uint32_t>(pthread_self())) + ",";
    const size_t at = text.find(id);
    return at == std::string::npos ? text : text.replace(at, id.size(), ", thread,");
}

}  // namespace

std::string describe_call(CallId id, const void *const *arguments) {
    std::string text = calls::describe_call(id, arguments);
    return id == CallId::equeue_send_ucast ? name_thread(std::move(text)) : text;
}

std::string describe_result(CallId id, const void *const *arguments, int64_t result) {
    if (id == CallId::get_vlan_info) {
        // Only the member bitmap, two words: the bytes around them are the VLAN library's own.
        constexpr size_t kRecord = 1;
        constexpr size_t kMembers = 8;
        const auto *record = *static_cast<const uint8_t *const *>(arguments[kRecord]);
        const std::string members = record == nullptr ? "null" : words(record + kMembers, 2 * sizeof(uint32_t));
        return std::to_string(static_cast<int32_t>(result)) + " {members=" + members + "}";
    }
    return calls::describe_result(id, arguments, result);
}

}  // namespace trace_text
