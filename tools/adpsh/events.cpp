// Stores events as text, with a limit.
#include "tools/adpsh/events.h"

#include "tools/adpsh/show.h"

#include <mutex>
#include <utility>

namespace adpsh {

namespace {

// Bounds the memory that a callback without end can take.
constexpr size_t kMaxEvents = 4096;

std::mutex g_guard;
std::vector<std::string> g_events;

}  // namespace

int32_t keep_event(const exported::Callback &callback, const void *const *arguments) {
    std::string text = std::string(callback.name) + "(";
    for (size_t i = 0; i < callback.params.size(); ++i) {
        const calls::Param &parameter = callback.params[i];
        const void *const from = calls::target(parameter, arguments[i]);
        text += std::string(i == 0 ? "" : ", ") + parameter.name + "=";
        text += from == nullptr ? "null" : text_of(parameter.element, from, parameter.extent);
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
