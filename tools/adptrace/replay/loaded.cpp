// Loads libraries, and calls them by the names of their functions.
#include "tools/adptrace/replay/loaded.h"

#include <adp/port.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "calls/json_memory.h"
#include "platform/device_services.h"
#include "tools/adptrace/command.h"

namespace adptrace::replay {

namespace {

using calls::CallId;
using nlohmann::json;

constexpr char kPortMap[] = "intf_to_phy_port";
constexpr size_t kMostRows = 1024;  // of a recording

const char *text_at(const void *argument) {
    return *static_cast<const char *const *>(argument);
}

/** The logger takes a format, and here its text. */
int64_t log(void *function, const void *const *arguments) {
    return reinterpret_cast<decltype(&Log_logging_func)>(function)(*static_cast<const int32_t *>(arguments[0]),
                                                                   *static_cast<const int32_t *>(arguments[1]),
                                                                   text_at(arguments[2]), "%s", text_at(arguments[4]));
}

/** The port map as an argument, so that it is written and read as one. */
calls::Param rows_param() {
    return {.name = "board",
            .element = exported::find_table(kPortMap)->element,
            .direction = calls::Direction::kInOut,
            .shape = calls::Shape::kPlain,
            .extent = static_cast<uint32_t>(kMostRows),
            .counted_by = calls::kNotCounted};
}

}  // namespace

SharedLibrary::SharedLibrary(const std::string &file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL)) {
    if (handle_ == nullptr) {
        throw Refusal(file + " cannot be loaded: " + dlerror() + ".");
    }
}

void *SharedLibrary::find(const char *name) const {
    return dlsym(handle_, name);
}

LoadedDriver::LoadedDriver(const std::vector<std::string> &files) : libraries_(files.begin(), files.end()) {
    if (const void *const queue = find("erps_event_queue"); queue != nullptr) {
        set_event_queue(*static_cast<const uintptr_t *>(queue));
    }
}

void *LoadedDriver::find(const char *name) const {
    for (const SharedLibrary &library : libraries_) {
        if (void *const found = library.find(name); found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

int64_t LoadedDriver::ask(CallId id, const void *const *arguments) {
    void *&function = functions_[static_cast<size_t>(id)];
    if (function == nullptr) {
        function = find(calls::call(id).name);
    }
    if (function == nullptr) {
        throw Refusal(std::string("no driver library has ") + calls::call(id).name + ".");
    }
    return id == CallId::Log_logging_func ? log(function, arguments) : calls::call_function(function, id, arguments);
}

LoadedLibrary::LoadedLibrary(const std::string &file) : library_(file) {}

bool LoadedLibrary::has(const exported::Call &call) const {
    return library_.find(call.name) != nullptr;
}

int64_t LoadedLibrary::make(const exported::Call &call, const void *const *arguments) {
    return call.invoker(library_.find(call.name), arguments);
}

LoadedLibrary::Map LoadedLibrary::map() const {
    auto *const *const rows = static_cast<adp_port_row_t *const *>(library_.find(kPortMap));
    const auto *const highest = static_cast<const uint32_t *>(library_.find("adp_max_phy_port_num"));
    const bool is_there = rows != nullptr && highest != nullptr && *rows != nullptr;
    return is_there ? Map{*rows, std::min<size_t>(*highest, kMostRows - 1) + 1} : Map{};
}

json LoadedLibrary::board() const {
    const Map now = map();
    const calls::Param param = rows_param();
    calls::Blocks blocks;
    blocks[0] = {now.rows, now.count};
    return arguments_now({&param, 1}, blocks)[param.name];
}

void LoadedLibrary::set_board(const json &rows) {
    const size_t count = rows.is_array() ? std::min(rows.size(), kMostRows) : 0;
    auto *const resize =
        reinterpret_cast<decltype(&adp_set_max_phy_port_num)>(library_.find("adp_set_max_phy_port_num"));
    if (map().count < count && resize != nullptr) {
        resize(static_cast<uint32_t>(count - 1));
    }
    const Map now = map();
    if (now.rows == nullptr) {
        return;
    }
    std::memset(now.rows, 0, now.count * sizeof *now.rows);
    const calls::Param param = rows_param();
    calls::Blocks blocks;
    blocks[0] = {now.rows, now.count};
    calls::store({&param, 1}, blocks, {{param.name, rows}});
}

}  // namespace adptrace::replay
