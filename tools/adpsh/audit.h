/**
 * @file audit.h
 * Compares the library's tables with what the driver reads back, and with each other. Only driver calls that read are
 * made. What the tables and the driver say is not believed: every count is limited.
 */
#pragma once

#include "tools/adpsh/audit_tables.h"
#include "tools/adpsh/multicast_groups.h"

#include <stddef.h>
#include <stdint.h>
#include <string>
#include <string_view>
#include <vector>

namespace adpsh {

/** A difference, or a driver call that failed. */
struct Finding {
    std::string topic;
    std::string place;
    std::string text;    ///< what differs; empty for a call
    std::string call;    ///< the driver call, with what it was asked for
    int32_t result = 0;  ///< the call's
};

/** The most findings that are kept. */
inline constexpr size_t kMostFindings = 10000;

/** What an audit finds, topic by topic. */
class Audit {
  public:
    /** The topic of what follows. */
    void begin(std::string_view topic) { topic_ = topic; }

    void difference(std::string place, std::string text);
    /** Notes a driver call unless it succeeded. @return whether it did */
    bool check(std::string place, std::string call, int32_t result);
    /** Adds to the list of what was compared. */
    void compared(size_t count, std::string_view one, std::string_view many);
    /** Notes a table that is left out because the loaded library does not have it. */
    void leave_out(std::string_view table);

    [[nodiscard]] const std::vector<Finding> &findings() const { return findings_; }
    /** All of them, also those that there was no room for. */
    [[nodiscard]] size_t differences() const { return differences_; }
    [[nodiscard]] size_t failed_calls() const { return failed_calls_; }
    /** What was compared, what was left out, and what no driver call reads. */
    [[nodiscard]] std::string scope() const;

  private:
    void add(Finding finding);

    std::string topic_;
    std::vector<Finding> findings_;
    size_t differences_ = 0;
    size_t failed_calls_ = 0;
    std::vector<std::string> compared_;
    std::vector<std::string> left_out_;
};

Audit audit(const AuditTables &tables, const MulticastGroups &groups);

// The topics, in files of their own.
void audit_port_map(const AuditTables &tables, Audit &audit);
void audit_trunks(const AuditTables &tables, const std::vector<adp_l2_entry_t> &addresses, Audit &audit);
void audit_stg(const AuditTables &tables, Audit &audit);
void audit_rules(const AuditTables &tables, Audit &audit);
void audit_multicast(const MulticastGroups &groups, const std::vector<adp_l2_entry_t> &addresses, Audit &audit);

/** The driver's L2 table. Its end cannot be told from a call that fails. */
std::vector<adp_l2_entry_t> read_addresses(Audit &audit);

/** `01:00:5e:01:02:03 in VLAN 1`. */
std::string address_text(const uint8_t *mac, uint32_t vid);

}  // namespace adpsh
