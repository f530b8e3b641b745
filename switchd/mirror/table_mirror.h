// A table of the chip that is brought to what is wanted. It may be full, or have no room for one entry and room for the
// next, and what is wanted may be thousands of entries that hosts have asked for.
#pragma once

#include <adp/status.h>
#include <stddef.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "switchd/mirror/failures.h"
#include "switchd/mirror/switch_state.h"

namespace switchd {

/** The calls on one kind of entry. */
template <typename Value>
struct TableCalls {
    const char *entries;                                  /**< what they are called */
    adp_status_t (*add)(const VlanMac &key, Value value); /**< replaces the entry of the key */
    adp_status_t (*remove)(const VlanMac &key);
    bool (*is_there)(const VlanMac &key);
};

template <typename Value>
class TableMirror {
  public:
    using Entries = std::map<VlanMac, Value>;
    /** Refused entries that one update tries again. */
    static constexpr size_t kRetries = 64;

    explicit TableMirror(const TableCalls<Value> &calls) : calls_{calls} {}

    /** Of the entries that are present, @p is_surplus picks those to remove. */
    template <typename IsSurplus>
    void remove(Entries &present, IsSurplus is_surplus, Remarks &remarks) {
        size_t failed = 0;
        adp_status_t status = ADP_OK;
        std::erase_if(present, [&](const auto &entry) {
            if (!is_surplus(entry.first, entry.second)) {
                return false;
            }
            const adp_status_t result = calls_.remove(entry.first);
            // Somebody else may have removed it before.
            const bool is_gone = result == ADP_OK || !calls_.is_there(entry.first);
            failed += is_gone ? 0 : 1;
            status = is_gone ? status : result;
            return is_gone;
        });
        report(failed, "keeps ", status, remarks);
    }

    void add(const Entries &wanted, Entries &present, Remarks &remarks) {
        std::erase_if(refused_, [&](const VlanMac &key) { return !wanted.contains(key); });
        std::vector<VlanMac> again;
        for (const auto &[key, value] : wanted) {
            const auto found = present.find(key);
            if (found != present.end() && found->second == value) {
                refused_.erase(key);
            } else if (refused_.contains(key)) {
                again.push_back(key);
            } else {
                add_one(key, value, present);
            }
        }
        for (size_t i = 0; i < again.size() && i < kRetries; ++i) {
            const VlanMac &key = again[next_retry_++ % again.size()];
            add_one(key, wanted.at(key), present);
        }
        report(refused_.size(), "does not take ", refusal_, remarks);
    }

  private:
    void add_one(const VlanMac &key, Value value, Entries &present) {
        const adp_status_t status = calls_.add(key, value);
        if (status == ADP_OK) {
            present[key] = value;
            refused_.erase(key);
        } else {
            refused_.insert(key);
            refusal_ = status;
        }
    }

    void report(size_t count, const char *failure, adp_status_t status, Remarks &remarks) const {
        if (count != 0) {
            check(status, "switch", failure + std::to_string(count) + " " + calls_.entries, remarks);
        }
    }

    TableCalls<Value> calls_;
    std::set<VlanMac> refused_;
    adp_status_t refusal_ = ADP_OK; /**< the latest */
    size_t next_retry_ = 0;
};

}  // namespace switchd
