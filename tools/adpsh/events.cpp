#include "tools/adpsh/events.h"

#include "tools/adpsh/show.h"

#include <mutex>
#include <utility>

namespace adpsh {

namespace {

// More than anyone reads; a callback that never stops must not eat the memory.
constexpr size_t kMaxEvents = 4096;

std::mutex g_guard;
std::vector<std::string> g_events;

}  // namespace

int32_t report_event(const Callback &callback, const void *const *arguments) {
    std::string text = std::string(callback.name) + "(";
    for (size_t i = 0; i < callback.parameters.size(); ++i) {
        const Parameter &parameter = callback.parameters[i];
        text += std::string(i == 0 ? "" : ", ") + parameter.name + "=";
        text += arguments[i] == nullptr ? "null" : text_of(parameter.type, arguments[i], parameter.count);
    }
    const std::lock_guard lock(g_guard);
    if (g_events.size() < kMaxEvents) {
        g_events.push_back(text + ")");
    }
    return 0;
}

std::vector<std::string> take_events() {
    const std::lock_guard lock(g_guard);
    return std::exchange(g_events, {});
}

}  // namespace adpsh
