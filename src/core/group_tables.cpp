// The tables of the eight groups and the accessors that read or write one row.
#include "core/group_tables.h"

#include <adp/port.h>

#include "core/bitmap.h"

adp_agg_record_t agg_info[ADP_AGG_GROUPS];
uint32_t agg_standby_members[ADP_AGG_GROUPS][2];
uint32_t agg_manage_intf[ADP_AGG_GROUPS];
adp_agg_event_cb_t agg_event_handle;

static_assert(sizeof(adp_agg_record_t) == 16, "the driver takes the record as four words");

namespace adp {

int8_t agg_link_status[ADP_AGG_GROUPS + 1];

namespace {

adp_status_t answer(TrunkId trunk, Intf found, adp_intf_t *out) {
    *out = number(found);
    return exists(trunk) ? ADP_OK : ADP_FAIL;
}

}  // namespace

Intf manager_of(Intf agg) {
    const TrunkId trunk = trunk_of(agg);
    return exists(trunk) ? Intf(agg_manage_intf[number(trunk)]) : kNoIntf;
}

Intf lowest_configured_of(Intf agg) {
    const TrunkId trunk = trunk_of(agg);
    if (exists(trunk)) {
        for (uint32_t n = 0; n < kBitmapPositions; ++n) {
            if (has_bit(agg_standby_members[number(trunk)], n)) {
                return Intf(n);
            }
        }
    }
    return kNoIntf;
}

}  // namespace adp

using namespace adp;

adp_intf_t GET_INTF_MAPPING_AGGINTF(adp_intf_t intf) {
    const uint32_t row = index_of(Intf(intf));
    return row > adp_max_phy_port_num || intf_map_trunk == nullptr ? number(kNoIntf) : intf_map_trunk[row];
}

adp_status_t adp_get_agg_group_drvid(adp_intf_t agg_intf, uint32_t *trunk_id) {
    *trunk_id = number(trunk_of(Intf(agg_intf)));
    return ADP_OK;
}

adp_status_t GET_AGG_CONFIG_MIN_INTF(adp_intf_t agg_intf, adp_intf_t *intf) {
    return answer(trunk_of(Intf(agg_intf)), lowest_configured_of(Intf(agg_intf)), intf);
}

adp_status_t GET_AGG_MANAGE_INTF(adp_intf_t agg_intf, adp_intf_t *intf) {
    return answer(trunk_of(Intf(agg_intf)), manager_of(Intf(agg_intf)), intf);
}

adp_status_t SET_AGG_MANAGE_INTF(adp_intf_t agg_intf, adp_intf_t intf) {
    const TrunkId trunk = trunk_of(Intf(agg_intf));
    if (!exists(trunk)) {
        return ADP_FAIL;
    }
    agg_manage_intf[number(trunk)] = intf;
    return ADP_OK;
}

adp_status_t adp_get_agg_link_staus(uint32_t group, uint32_t *state) {
    if (group - 1 >= ADP_AGG_GROUPS) {
        return ADP_FAIL;
    }
    *state = static_cast<uint32_t>(int32_t{agg_link_status[group]});
    return ADP_OK;
}

adp_status_t GET_AGG_LINK_STATUS(uint32_t group, uint32_t *state) {
    return adp_get_agg_link_staus(group, state);
}
