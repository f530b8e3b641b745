// The topics of an audit in their order, and what it says at its end.
#include "tools/adpsh/audit.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace adpsh {

namespace {

// The driver has no call that reads them. The tables are compared with each other instead.
constexpr std::string_view kUnreadable =
    "no driver call reads the ports of a trunk or the entries of rules, so these tables are compared with each other";

}  // namespace

void Audit::add(Finding finding) {
    if (findings_.size() < kMostFindings) {
        findings_.push_back(std::move(finding));
    }
}

void Audit::difference(std::string place, std::string text) {
    ++differences_;
    add({topic_, std::move(place), std::move(text), {}, 0});
}

bool Audit::check(std::string place, std::string call, int32_t result) {
    if (result != 0) {
        ++failed_calls_;
        add({topic_, std::move(place), {}, std::move(call), result});
    }
    return result == 0;
}

void Audit::compared(size_t count, std::string_view one, std::string_view many) {
    compared_.push_back(fmt::format("{} {}", count, count == 1 ? one : many));
}

void Audit::leave_out(std::string_view table) {
    left_out_.emplace_back(table);
}

std::string Audit::scope() const {
    std::string text = fmt::format("compared {}", fmt::join(compared_, ", "));
    if (findings_.size() < differences_ + failed_calls_) {
        text = fmt::format("the first {} are shown; {}", findings_.size(), text);
    }
    if (!left_out_.empty()) {
        text += fmt::format("; the loaded library has no {}", fmt::join(left_out_, ", "));
    }
    return fmt::format("{}; {}", text, kUnreadable);
}

Audit audit(const AuditTables &tables, const MulticastGroups &groups) {
    Audit audit;
    audit_port_map(tables, audit);
    audit.begin("addresses");
    const std::vector<adp_l2_entry_t> addresses = read_addresses(audit);
    audit_trunks(tables, addresses, audit);
    audit_stg(tables, audit);
    audit_rules(tables, audit);
    audit_multicast(groups, addresses, audit);
    return audit;
}

std::string address_text(const uint8_t *mac, uint32_t vid) {
    constexpr size_t kMacBytes = 6;
    return fmt::format("{:02x} in VLAN {}", fmt::join(mac, mac + kMacBytes, ":"), vid);
}

}  // namespace adpsh
