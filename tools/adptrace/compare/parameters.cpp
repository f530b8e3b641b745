// Looks up calls of both boundaries.
#include "tools/adptrace/compare/parameters.h"

#include <algorithm>
#include <map>
#include <set>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace adptrace {
namespace {

using calls::Kind;
using calls::Param;

std::map<std::string_view, Params> all_params() {
    std::map<std::string_view, Params> all;
    for (const exported::Call &call : exported::calls()) {
        all.emplace(call.name, call.params);
    }
    for (const calls::Call &call : calls::calls()) {
        all.emplace(call.name, call.params);
    }
    return all;
}

const std::map<std::string_view, Params> &params_by_name() {
    static const std::map<std::string_view, Params> kAll = all_params();
    return kAll;
}

std::set<std::string_view> all_handles() {
    std::set<std::string_view> names;
    for (const auto &[name, params] : params_by_name()) {
        for (const Param &param : params) {
            if (param.element.kind == Kind::kWord && param.is_written()) {
                names.insert(param.name);
            }
        }
    }
    return names;
}

}  // namespace

std::optional<Params> params_of(std::string_view name) {
    const auto found = params_by_name().find(name);
    return found == params_by_name().end() ? std::nullopt : std::optional(found->second);
}

bool is_handle(const Param &param) {
    static const std::set<std::string_view> kNames = all_handles();
    return param.element.kind == Kind::kWord && kNames.contains(param.name);
}

bool is_octets(const Param &param) {
    return param.element.kind == Kind::kU8 || param.element.kind == Kind::kOpaque;
}

bool is_result_of_machine(std::string_view name) {
    return name == "adp_pkt_init" || name == "get_nic_index";
}

}  // namespace adptrace
