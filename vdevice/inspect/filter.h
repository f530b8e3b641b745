// Filters: which rows of an answer are asked for. A subject lists its own; one walk applies all of them.
#pragma once

#include <stddef.h>
#include <array>
#include <nlohmann/json_fwd.hpp>
#include <span>

namespace vdevice::inspect {

struct Subject;

enum class FilterKind : uint8_t {
    kNumbers, /**< rows in which one of the columns has one of the numbers */
    kWord,    /**< rows in which one of the columns is the word, whatever its case */
    kNonzero, /**< rows with a count that is not 0 */
    kLast,    /**< the last rows of each table, so many */
    kOwn,     /**< no filter of rows: the subject reads it itself */
};

struct Filter {
    const char *name;  /**< the member of the request, and the option of vdevctl */
    const char *value; /**< as the help shows it; "" if there is none */
    const char *help;
    FilterKind kind;
    std::array<const char *, 3> columns = {}; /**< the members of a row that are looked at */
};

constexpr const char *kPortList = "PORTS";
constexpr Filter kByPort{"port", kPortList, "rows of these ports: 3 or 1-4,7 or cpu", FilterKind::kNumbers, {"port"}};
constexpr Filter kByVlan{"vlan", "VLANS", "rows of these VLANs: 10 or 1-99,200", FilterKind::kNumbers, {"vid"}};
constexpr Filter kNonzero{"nonzero", "", "rows with a count that is not 0", FilterKind::kNonzero, {}};
constexpr Filter kLast{"last", "N", "the last N rows", FilterKind::kLast, {}};

/** Rows of an answer's tables: those that the filters leave, and all. */
struct RowCount {
    size_t shown = 0;
    size_t all = 0;
};

/** The member of an answer that is to become text, with how many rows each table had. */
constexpr const char *kSizes = "sizes";

/** Whether the request asks for the number by a filter of numbers; without that member it does. */
bool asks_for(const nlohmann::json &request, const Filter &filter, int number);
/** The same of a user port, or 0. */
inline bool asks_for_port(const nlohmann::json &request, int port) {
    return asks_for(request, kByPort, port);
}

/** Whether the request has a filter of the subject. */
bool is_filtered(const nlohmann::json &request, const Subject &subject);
/** How many rows each table has. */
nlohmann::json table_sizes(const nlohmann::json &answer);
/** Takes the rows out of the answer that the request does not ask for. Throws a Refusal for a value of no meaning. */
RowCount filter(nlohmann::json &answer, const nlohmann::json &request, const Subject &subject);

}  // namespace vdevice::inspect
