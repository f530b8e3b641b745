// Look-ups in the tables of the exported interface, and its calls and events.
#include "calls/exported.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace exported {

namespace {

std::atomic<EventReceiver> event_receiver = nullptr;

template <typename T>
const T *find(std::span<const T> rows, std::string_view name) {
    const auto found = std::find_if(rows.begin(), rows.end(), [name](const T &row) { return row.name == name; });
    return found == rows.end() ? nullptr : &*found;
}

}  // namespace

const Call *find_call(std::string_view name) {
    return find(calls(), name);
}

const Table *find_table(std::string_view name) {
    return find(tables(), name);
}

const Structure *find_structure(std::string_view name) {
    const auto rows = structures();
    const auto found =
        std::find_if(rows.begin(), rows.end(), [name](const Structure &row) { return row.layout->name == name; });
    return found == rows.end() ? nullptr : &*found;
}

const Constant *find_constant(std::string_view name) {
    return find(constants(), name);
}

int64_t invoke(const Call &call, void *function, void *const *memory) {
    std::vector<const void *> arguments;
    for (size_t index = 0; index < call.params.size(); ++index) {
        arguments.push_back(call.params[index].is_pointer() ? &memory[index] : memory[index]);
    }
    return call.invoker(function, arguments.data());
}

void receive_events(EventReceiver receiver) {
    event_receiver = receiver;
}

int32_t report_event(const Callback &callback, const void *const *arguments) {
    const EventReceiver receiver = event_receiver;
    return receiver == nullptr ? 0 : receiver(callback, arguments);
}

}  // namespace exported
