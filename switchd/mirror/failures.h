// Calls of the library that failed, as remarks.
#pragma once

#include <adp/status.h>

#include <string>
#include <string_view>

#include "switchd/mirror/remark.h"

namespace switchd {

inline std::string vlan_text(uint16_t vid) {
    return "VLAN " + std::to_string(vid);
}

/** Whether the call succeeded; else a remark says what is the matter. */
inline bool check(adp_status_t status, std::string_view subject, std::string_view failure, Remarks &remarks) {
    if (status != ADP_OK) {
        remarks.push_back({std::string(subject), std::string(failure) + ": " + adp_status_text(status)});
    }
    return status == ADP_OK;
}

}  // namespace switchd
