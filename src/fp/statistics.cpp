// Counters of the field processor, and what it does with packets that match no rule.
#include <netlink_api.h>

#include "core/bitmap.h"
#include "core/messages.h"
#include "core/port_map.h"
#include "fp/entry.h"

namespace adp {
namespace {

constexpr Message kRead{{"adp_fp_get_statistics", 1311}, "%s:[%05d] counter_idx=[%d], type=[0x%x], count=[%d]\n"};
constexpr Message kCleared{{"adp_fp_clear_statistics", 1335}, "%s:[%05d] counter_idx=[%d], type=[0x%x]\n"};
constexpr Message kMissAction{{"adp_fp_lookupMissAct_set", 1349},
                              "%s:[%05d] unit=[%d] intfId=[%d] phyId=[%d], Missaction=[0x%x]\n"};

}  // namespace
}  // namespace adp

using namespace adp;

int32_t adp_fp_get_statistics(int32_t counter, int32_t type) {
    int32_t count = 0;
    user_field_get_statistics(fp_handle, kFieldUnit, counter, type, &count);
    log_rule(kRead, counter, type, count);
    return count;
}

adp_status_t adp_fp_clear_statistics(uint32_t, uint32_t, int32_t counter, int32_t type) {
    const int32_t result = user_field_clear_statistics(fp_handle, kFieldUnit, counter, type);
    log_rule(kCleared, counter, type);
    return result;
}

adp_status_t adp_fp_lookupMissAct_set(int32_t intf, uint32_t miss_action) {
    const Intf missed{static_cast<uint32_t>(intf)};
    const int32_t result = user_field_lookupMissAct_set(fp_handle, kFieldUnit, number(phy_of(missed)), miss_action);
    // Contract: the port is looked up again for the log; the map may have changed since the driver call.
    log_rule(kMissAction, kFieldUnit, intf, number(phy_of(missed)), miss_action);
    return result;
}

adp_status_t adp_fp_lookupMissAct_pbmp_set(FpPortBitmap ports, uint32_t miss_action) {
    adp_status_t last = ADP_OK;
    for (uint32_t n = 0; n < kBitmapPositions; ++n) {
        if (has_bit(ports.word, n)) {
            last = adp_fp_lookupMissAct_set(static_cast<int32_t>(n), miss_action);
        }
    }
    return last;
}
