// Goes through the tables of both boundaries once.
#include "tools/adptrace/compare/parameters.h"

#include <set>
#include <span>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace adptrace {
namespace {

using calls::Kind;
using calls::Param;

void add_handles(std::span<const Param> params, std::set<std::string_view> &names) {
    for (const Param &param : params) {
        if (param.element.kind == Kind::kWord && param.is_written()) {
            names.insert(param.name);
        }
    }
}

std::set<std::string_view> all_handles() {
    std::set<std::string_view> names;
    for (const exported::Call &call : exported::calls()) {
        add_handles(call.params, names);
    }
    for (const calls::Call &call : calls::calls()) {
        add_handles(call.params, names);
    }
    return names;
}

}  // namespace

bool is_handle(const Param &param) {
    static const std::set<std::string_view> kNames = all_handles();
    return param.element.kind == Kind::kWord && kNames.contains(param.name);
}

bool is_address_of_program(std::string_view call, const Param &param) {
    return call == "equeue_send_ucast" && param.name == std::string_view("queue");
}

bool is_octets(const Param &param) {
    return param.element.kind == Kind::kU8 || param.element.kind == Kind::kOpaque;
}

bool is_result_of_machine(std::string_view name) {
    return name == "adp_pkt_init" || name == "get_nic_index";
}

}  // namespace adptrace
