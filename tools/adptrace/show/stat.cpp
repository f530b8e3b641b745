// Counts calls by name, those of the two boundaries apart.
#include "tools/adptrace/show/stat.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tools/adptrace/show/times.h"

namespace adptrace {
namespace {

using nlohmann::json;

struct Count {
    std::string_view call;
    uint64_t count = 0;
    uint64_t errors = 0;
    uint64_t unreturned = 0;
    uint64_t nanoseconds = 0;
    uint64_t driver_calls = 0; /**< that the library made for it */
};

struct Counts {
    std::vector<Count> library;
    std::vector<Count> driver;
    uint64_t by_program = 0; /**< driver calls within no call */
};

uint64_t sum(uint64_t a, uint64_t b) {
    const uint64_t total = a + b;
    return total < a ? std::numeric_limits<uint64_t>::max() : total;
}

void add(Count &to, const Count &count) {
    to.count += count.count;
    to.errors += count.errors;
    to.unreturned += count.unreturned;
    to.nanoseconds = sum(to.nanoseconds, count.nanoseconds);
    to.driver_calls += count.driver_calls;
}

Count count_of(const Call &call) {
    const uint64_t time = call.has_returned ? time_between(call.began, call.ended) : 0;
    return {call.name, 1, has_failed(call) ? 1U : 0U, call.has_returned ? 0U : 1U, time, 0};
}

std::vector<Count> sorted(const std::map<std::string_view, Count> &counts, Order order) {
    std::vector<Count> rows(counts.size());
    std::transform(counts.begin(), counts.end(), rows.begin(), [](const auto &each) { return each.second; });
    const auto key = [order](const Count &row) {
        return order == Order::kTime ? row.nanoseconds : order == Order::kCount ? row.count : row.errors;
    };
    if (order != Order::kName) {
        std::stable_sort(rows.begin(), rows.end(), [key](const Count &a, const Count &b) { return key(a) > key(b); });
    }
    return rows;
}

Counts counts_of(const Recording &recording, const Filter &filter, Order order) {
    std::map<std::string_view, Count> library;
    std::map<std::string_view, Count> driver;
    uint64_t by_program = 0;
    std::vector<bool> is_chosen(recording.calls().size());
    for (size_t i = 0; i < recording.calls().size(); ++i) {
        const Call &call = recording.calls()[i];
        const bool is_library = is_of_library(call);
        if (call.within != kNone && is_chosen[call.within] && !is_library) {
            ++library[recording.calls()[call.within].name].driver_calls;
        }
        is_chosen[i] = filter.has(recording, call);
        if (is_chosen[i]) {
            Count &row = (is_library ? library : driver)[call.name];
            row.call = call.name;
            add(row, count_of(call));
            by_program += !is_library && call.within == kNone ? 1 : 0;
        }
        is_chosen[i] = is_chosen[i] && is_library;
    }
    return {sorted(library, order), sorted(driver, order), by_program};
}

std::string time_of(const Count &row) {
    return row.count == row.unreturned ? "-" : duration_text(row.nanoseconds);
}

std::string mean_of(const Count &row) {
    const uint64_t returned = row.count - row.unreturned;
    return returned == 0 ? "-" : duration_text(row.nanoseconds / returned);
}

std::string library_row(const Count &row) {
    const double each = row.count == 0 ? 0 : static_cast<double>(row.driver_calls) / static_cast<double>(row.count);
    return fmt::format("{:>9} {:>9} {:>10} {:>10} {:>13.1f}  {}\n", row.count, row.errors, time_of(row), mean_of(row),
                       each, row.call);
}

std::string driver_row(const Count &row) {
    return fmt::format("{:>9} {:>9} {:>10} {:>10}  {}\n", row.count, row.errors, time_of(row), mean_of(row), row.call);
}

Count total_of(const std::vector<Count> &rows) {
    Count total;
    for (const Count &row : rows) {
        add(total, row);
    }
    total.call = "total";
    return total;
}

std::string unreturned_text(const std::vector<Count> &rows) {
    std::string text;
    for (const Count &row : rows) {
        text += row.unreturned == 0 ? "" : fmt::format("{} of {} did not return.\n", row.unreturned, row.call);
    }
    return text;
}

json json_of(const Count &row, bool is_library) {
    json object = {{"call", row.call},
                   {"count", row.count},
                   {"errors", row.errors},
                   {"nanoseconds", row.nanoseconds},
                   {"unreturned", row.unreturned}};
    if (is_library) {
        object["driver_calls"] = row.driver_calls;
    }
    return object;
}

json json_of(const std::vector<Count> &rows, bool is_library) {
    json array = json::array();
    for (const Count &row : rows) {
        array.push_back(json_of(row, is_library));
    }
    return array;
}

}  // namespace

std::string stat_text(const Recording &recording, const Filter &filter, Order order) {
    const Counts counts = counts_of(recording, filter, order);
    std::string text = fmt::format("{:>9} {:>9} {:>10} {:>10} {:>13}  {}\n", "calls", "errors", "time", "each",
                                   "driver calls", "call of the library");
    for (const Count &row : counts.library) {
        text += library_row(row);
    }
    text += library_row(total_of(counts.library)) + "\n" +
            fmt::format("{:>9} {:>9} {:>10} {:>10}  {}\n", "calls", "errors", "time", "each",
                        "call of the driver and the services");
    for (const Count &row : counts.driver) {
        text += driver_row(row);
    }
    text += driver_row(total_of(counts.driver));
    const std::string unreturned = unreturned_text(counts.library) + unreturned_text(counts.driver);
    text += counts.by_program == 0 && unreturned.empty() ? "" : "\n";
    text += counts.by_program == 0 ? ""
                                   : fmt::format("{} of the driver's calls {} made by the program itself.\n",
                                                 counts.by_program, counts.by_program == 1 ? "was" : "were");
    return text + unreturned;
}

std::string stat_json(const Recording &recording, const Filter &filter, Order order) {
    const Counts counts = counts_of(recording, filter, order);
    return json{{"library", json_of(counts.library, true)},
                {"driver", json_of(counts.driver, false)},
                {"driver_calls_by_program", counts.by_program}}
               .dump() +
           "\n";
}

}  // namespace adptrace
