// Compares the port map with the one that was written last.
#include "tools/adptrace/record/board.h"

#include <adp/port.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

#include "calls/exported.h"
#include "calls/json_text.h"
#include "tools/adptrace/record/loaded.h"
#include "tools/adptrace/record/process.h"
#include "tools/adptrace/record/readable.h"

namespace adptrace::record {
namespace {

constexpr size_t kMostRows = 1024;

struct Map {
    const adp_port_row_t *rows = nullptr;
    size_t count = 0;
    bool operator==(const Map &) const = default;
};

Map map_seen;                             /**< the map that was there the last time */
std::vector<adp_port_row_t> rows_written; /**< what its rows were */
std::atomic<bool> is_written;             /**< whether one was */
pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

Map map_now() {
    static Symbol rows;
    static Symbol count;
    const auto *rows_at = static_cast<adp_port_row_t *const *>(rows.table("intf_to_phy_port"));
    const auto *count_at = static_cast<const uint32_t *>(count.table("adp_max_phy_port_num"));
    if (rows_at == nullptr || count_at == nullptr || *rows_at == nullptr) {
        return {};
    }
    return {*rows_at, std::min<size_t>(*count_at, kMostRows - 1) + 1};
}

/** Whether the map differs from what was written; if so it is kept. */
bool keep_if_changed(Map map) {
    if (map == map_seen && std::memcmp(map.rows, rows_written.data(), map.count * sizeof *map.rows) == 0) {
        return false;
    }
    // While another thread makes a map its number of rows may be that of the next one.
    map.count = std::min(map.count, readable_octets(map.rows, map.count * sizeof *map.rows) / sizeof *map.rows);
    rows_written.assign(map.rows, map.rows + map.count);
    map_seen = map;
    is_written = true;
    return true;
}

void append_board(std::string &line) {
    static const exported::Table *table = exported::find_table("intf_to_phy_port");
    const calls::Param param = {.name = "board",
                                .element = table->element,
                                .direction = calls::Direction::kIn,
                                .shape = calls::Shape::kPlain,
                                .extent = static_cast<uint32_t>(kMostRows),
                                .counted_by = calls::kNotCounted};
    calls::Blocks blocks{};
    blocks[0] = {rows_written.data(), rows_written.size()};
    calls::append_arguments(line, {&param, 1}, blocks);
}

void write_if_changed(Process &process, std::string &line, const Map &map) {
    if (!keep_if_changed(map)) {
        return;
    }
    line.clear();
    append_board(line);
    line.back() = ',';
    line += process.of;
    append_time(process, line);
    line += "}\n";
    process.sink.write_line(line.data(), line.size());
}

}  // namespace

void write_changed_board(Process &process, std::string &line) {
    const Map map = map_now();
    // Another thread that looks at it will write what has changed; and one that has left in the middle keeps none
    // waiting.
    if (map.rows == nullptr || pthread_mutex_trylock(&mutex) != 0) {
        return;
    }
    write_if_changed(process, line, map);
    pthread_mutex_unlock(&mutex);
}

void write_first_board(Process &process, std::string &line) {
    if (!is_written.load(std::memory_order_relaxed)) {
        write_changed_board(process, line);
    }
}

void forget_board() {
    is_written = false;
    pthread_mutex_init(&mutex, nullptr);
    map_seen = {};
}

}  // namespace adptrace::record
