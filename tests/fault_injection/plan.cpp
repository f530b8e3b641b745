// Plans of rows: which clause is for a state.
#include "tests/fault_injection/plan.h"

#include <algorithm>
#include <iterator>

#include "tests/fault_injection/plan_reader.h"

namespace fault_injection {
namespace {

constexpr std::string_view kNeverFail[] = {"agg_event", "link_event", "usleep"};

/** A clause and the port that its calls must name. */
struct Chosen {
    std::string text;
    std::string port;
};

std::optional<Chosen> managed(const Row &row, const State &state) {
    if (row.has("manage")) {
        return Chosen{row.clause("manage"), std::to_string(physical(state.manage))};
    }
    if (row.has("manage or 0")) {
        return state.manage == 0 ? Chosen{"0", ""}
                                 : Chosen{row.clause("manage or 0"), std::to_string(physical(state.manage))};
    }
    if (row.has("manage or lowest")) {
        const uint32_t member = state.manage != 0 ? state.manage : state.lowest_configured();
        return member == 0 ? Chosen{"203", ""}
                           : Chosen{row.clause("manage or lowest"), std::to_string(physical(member))};
    }
    return std::nullopt;
}

std::optional<Chosen> for_group(const Row &row, const State &state) {
    if (row.has("group")) {
        return Chosen{row.clause("group"), ""};
    }
    return managed(row, state);
}

/** A group that does not exist gives -1, unless the answer for groups is a number and no table is read. */
std::optional<Chosen> for_no_such_group(const Row &row, const State &state) {
    if (row.has("group") && is_number(row.clause("group"))) {
        return Chosen{row.clause("group"), ""};
    }
    return for_group(row, state) ? std::optional(Chosen{"-1", ""}) : std::nullopt;
}

std::optional<Chosen> choose(const Row &row, const State &state) {
    if (row.has(state.name)) {
        return Chosen{row.clause(state.name), ""};
    }
    if (!row.wants(state.name)) {
        return std::nullopt;
    }
    if (row.has("straight") && !(state.who == Who::kForeign && row.has("other"))) {
        return Chosen{row.clause("straight"), std::to_string(state.port())};
    }
    if (row.has("any")) {
        // A call that takes no interface depends on nothing but whether there are groups.
        return state.is_plain() ? std::optional(Chosen{row.clause("any"), ""}) : std::nullopt;
    }
    switch (state.who) {
        case Who::kPort:
            return row.has("port") ? std::optional(Chosen{row.clause("port"), std::to_string(state.port())})
                                   : std::nullopt;
        case Who::kGroup:
            return for_group(row, state);
        case Who::kNoSuchGroup:
            return for_no_such_group(row, state);
        case Who::kForeign:
            return row.has("other") ? std::optional(Chosen{row.clause("other"), ""}) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

bool Item::can_fail() const {
    return kind == Kind::kCall && std::find(std::begin(kNeverFail), std::end(kNeverFail), name) == std::end(kNeverFail);
}

std::optional<Plan> plan_of(const Family &family, const Row &row, const State &state) {
    const auto chosen = choose(row, state);
    return chosen ? std::optional(read_plan(family, state, chosen->text, chosen->port)) : std::nullopt;
}

std::optional<Plan> plan_without_driver(const Family &family, const Row &row, const State &state) {
    if (choose(row, state) && row.has("all failing")) {
        return read_plan(family, state, row.clause("all failing"), "");
    }
    return plan_of(family, row, state);
}

}  // namespace fault_injection
