// What is written as octets, of all calls: nothing whose type is known. A new name here is a decision, see
// calls/generate/exported.py.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "calls/call_table.h"
#include "calls/exported.h"
#include "calls/json_text.h"

namespace json_coverage_test {

using calls::Kind;
using calls::Octets;

using Names = std::set<std::string>;

void add_octets(Names &names, const std::string &name, const calls::Element &element, bool is_one) {
    if (element.kind == Kind::kStruct) {
        for (const calls::Field &field : element.layout->fields) {
            if (!field.is_pointer) {
                add_octets(names, element.layout->name + ("." + std::string(field.name)), field.element,
                           field.count == 1);
            }
        }
    } else if (element.octets == Octets::kPlain &&
               (element.kind == Kind::kOpaque || (element.kind == Kind::kU8 && !is_one))) {
        names.insert(name);
    }
}

template <typename Calls>
Names octets_of(const Calls &every) {
    Names names;
    for (const auto &call : every) {
        EXPECT_LE(call.params.size(), calls::kMostParams) << call.name;
        for (const calls::Param &param : call.params) {
            const bool is_one = param.counted_by == calls::kNotCounted && param.extent == 1;
            const std::string prefix = param.element.kind == Kind::kOpaque ? call.name + std::string(".") : "";
            add_octets(names, prefix + param.name, param.element, is_one);
        }
    }
    return names;
}

TEST(JsonCoverage, OctetsOfExportedCallsAreOctets) {
    EXPECT_EQ(octets_of(exported::calls()),
              Names({"RemarkRule.unused22", "adp_l2_entry_t.mac", "data", "frame", "mac", "tag"}));
}

// The ports of a trunk's record are octets as the driver has them, and data and mask are those of addresses.
TEST(JsonCoverage, OctetsOfImportedCallsAreOctets) {
    EXPECT_EQ(octets_of(calls::calls()), Names({"adp_agg_record_t.ports", "adp_l2_entry_t.mac", "data", "key", "mac",
                                                "mask", "netlink_mcast_entry_t.mac"}));
}

}  // namespace json_coverage_test
