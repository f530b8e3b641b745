// Cases out of the rows of fault injection, and of rows of the benchmark.
#include "bench/calls/record/cases.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>

#include "calls/exported.h"
#include "tests/fault_injection/row.h"

namespace record {
namespace {

constexpr const char *kInterface = "$intf";
constexpr const char *kPort = "2";
// The interfaces, and the states of tests/fault_injection that a row must be for.
constexpr const char *kPortState = "user";
constexpr const char *kGroup = "agg8";
constexpr const char *kGroupState = "agg8";
constexpr const char *kSmallGroup = "agg2";
constexpr const char *kSmallGroupState = "agg3";

const std::set<std::string> kAttributeFunctions = {"adp_set_phy_port_attr", "adp_get_phy_port_attr"};

std::string replaced(std::string text, const std::string &what, const std::string &by) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

/** The attribute's name, for the functions that are told which one. */
std::string selector(const fault_injection::Row &row) {
    if (kAttributeFunctions.count(row.function) == 0) {
        return "";
    }
    const std::string attribute = fault_injection::split(row.call, ' ').at(2);
    return " " + replaced(attribute, "ADP_ATTR_", "");
}

Case make_case(const fault_injection::Row &row, const std::string &name, const std::string &interface) {
    Case made{name,
              row.function,
              interface == kGroup,
              replaced(row.call, kInterface, interface),
              {},
              row.clause("result") == "any"};
    made.name += made.is_group ? " on a group" : "";
    for (const std::string &piece : fault_injection::split(row.clause("before"), ';')) {
        made.before.push_back(replaced(piece, kInterface, interface));
    }
    return made;
}

/** Tables are made by calls here, since not all of them can be written to from outside the library. */
bool is_prepared_by_calls(const fault_injection::Row &row) {
    const std::vector<std::string> pieces = fault_injection::split(row.clause("before"), ';');
    return std::all_of(pieces.begin(), pieces.end(), [](const std::string &piece) {
        return exported::find_call(piece.substr(0, piece.find(' '))) != nullptr;
    });
}

void add_cases(const fault_injection::Row &row, const std::string &name, std::vector<Case> &cases) {
    if (!row.takes_interface() || row.wants(kPortState)) {
        cases.push_back(make_case(row, name, kPort));
    }
    if (row.takes_interface() && row.wants(kGroupState)) {
        cases.push_back(make_case(row, name, kGroup));
    } else if (row.takes_interface() && row.wants(kSmallGroupState)) {
        cases.push_back(make_case(row, name, kSmallGroup));
    }
}

std::vector<fault_injection::Row> all_rows(const std::string &own) {
    std::ifstream file(own);
    if (!file) {
        throw std::runtime_error(own + " cannot be read");
    }
    std::vector<fault_injection::Row> rows = fault_injection::parse_family(own, file).rows;
    for (const std::string &family : fault_injection::family_names()) {
        const auto more = fault_injection::read_family(family).rows;
        rows.insert(rows.end(), more.begin(), more.end());
    }
    return rows;
}

}  // namespace

std::vector<Case> all_cases(const std::string &own) {
    std::map<std::string, std::vector<Case>> by_name;
    for (const fault_injection::Row &row : all_rows(own)) {
        const std::string name = row.function + selector(row);
        std::vector<Case> &cases = by_name[name];
        if (cases.empty() && is_prepared_by_calls(row)) {
            add_cases(row, name, cases);
        }
    }
    std::vector<Case> cases;
    for (const auto &[name, found] : by_name) {
        cases.insert(cases.end(), found.begin(), found.end());
    }
    return cases;
}

}  // namespace record
