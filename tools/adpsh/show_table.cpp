// The command show: the library's exported tables, read in place.
#include "calls/describe.h"
#include "calls/exported.h"
#include "text/suggest.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/line_error.h"
#include "tools/adpsh/show.h"

#include <adp/adp.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace adpsh {

namespace {

constexpr size_t kMaxRows = 65536;
// Longer tables leave out the rows that are all zero.
constexpr size_t kShortTable = 32;
constexpr size_t kMaxNodes = 65536;

/** Address and length of a table. A table addressed by a pointer has as many rows as the port map. */
struct Extent {
    const uint8_t *begin;
    size_t rows;
};

Extent extent_of(const exported::Table &table) {
    if (!table.is_pointer) {
        return {static_cast<const uint8_t *>(table.address), table.rows};
    }
    const uint8_t *begin = nullptr;
    std::memcpy(&begin, table.address, sizeof begin);
    return {begin, std::min<size_t>(size_t{adp_max_phy_port_num} + 1, kMaxRows)};
}

bool is_list_head(const exported::Table &table) {
    return table.element.layout != nullptr && table.element.size == sizeof(adp_list_link_t) &&
           std::string_view(table.element.layout->name) == "adp_list_link_t";
}

size_t nodes_of(const exported::Table &table) {
    const auto *const head = static_cast<const adp_list_link_t *>(table.address);
    size_t nodes = 0;
    for (const adp_list_link_t *link = head->next; link != head && link != nullptr && nodes < kMaxNodes;
         link = link->next) {
        ++nodes;
    }
    return nodes;
}

std::string rows_text(const exported::Table &table, const Extent &extent) {
    const size_t size = table.element.size * table.columns;
    std::string text;
    size_t passed_over = 0;
    for (size_t i = 0; i < extent.rows; ++i) {
        const uint8_t *const row = extent.begin + i * size;
        if (extent.rows > kShortTable && std::all_of(row, row + size, [](uint8_t byte) { return byte == 0; })) {
            ++passed_over;
            continue;
        }
        text += fmt::format("{}  [{}] {}", text.empty() ? "" : "\n", i, text_of(table.element, row, table.columns));
    }
    if (passed_over != 0) {
        text += fmt::format("{}  ({} rows are 0)", text.empty() ? "" : "\n", passed_over);
    }
    return text;
}

std::string table_text(const exported::Table &table, const Extent &extent) {
    if (extent.begin == nullptr) {
        return fmt::format("{} = null: the table is made when the port map is, see map", table.name);
    }
    if (is_list_head(table)) {
        return fmt::format("{} = a list of {}", table.name, nodes_of(table));
    }
    if (extent.rows == 1 && !table.is_pointer) {
        return fmt::format("{} = {}", table.name, text_of(table.element, extent.begin, table.columns));
    }
    if (table.element.kind == calls::Kind::kU8 && table.columns == 1) {
        return fmt::format("{} = {}", table.name, calls::hex_text(extent.begin, extent.rows));
    }
    return fmt::format("{}:\n{}", table.name, rows_text(table, extent));
}

Json table_json(const exported::Table &table, const Extent &extent) {
    if (extent.begin == nullptr) {
        return nullptr;
    }
    if (is_list_head(table)) {
        return nodes_of(table);
    }
    if (extent.rows == 1 && !table.is_pointer) {
        return json_of(table.element, extent.begin, table.columns);
    }
    if (table.element.kind == calls::Kind::kU8 && table.columns == 1) {
        return calls::hex_text(extent.begin, extent.rows);
    }
    Json rows = Json::array();
    for (size_t i = 0; i < extent.rows; ++i) {
        rows.push_back(json_of(table.element, extent.begin + i * table.element.size * table.columns, table.columns));
    }
    return rows;
}

Answer list_tables() {
    Answer answer{"", {{"tables", Json::array()}}};
    for (const exported::Table &table : exported::tables()) {
        answer.text += std::string(answer.text.empty() ? "" : "\n") + table.name;
        answer.object["tables"].push_back(table.name);
    }
    return answer;
}

}  // namespace

Answer run_show(Session &, const Command &command) {
    const std::vector<std::string> words = words_of(command, 1);
    if (words.empty()) {
        return list_tables();
    }
    const exported::Table *const table = exported::find_table(words[0]);
    if (table == nullptr) {
        std::vector<std::string_view> names;
        for (const exported::Table &each : exported::tables()) {
            names.emplace_back(each.name);
        }
        const std::string hint = text::did_you_mean(words[0], names);
        throw LineError(
            "unknown table '" + words[0] + "'" +
            (hint.empty() ? "; 'show' lists the library's tables, 'device' what the device can be asked" : hint));
    }
    if (table->address == nullptr) {
        throw LineError("the loaded library has no " + words[0]);
    }
    const Extent extent = extent_of(*table);
    return {table_text(*table, extent), {{"show", table->name}, {"value", table_json(*table, extent)}}};
}

}  // namespace adpsh
