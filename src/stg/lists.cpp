// Counts and lists of spanning-tree groups and their VLANs. Contract: some counts are constants, whatever the driver
// returns.
#include <adp/stg.h>
#include <netlink_api.h>
#include <stddef.h>

#include "core/messages.h"

namespace adp {
namespace {

constexpr uint32_t kGroupChunk = 64;
constexpr uint32_t kVlanChunk = 1024;
constexpr int32_t kMaxGroups = 64;
constexpr int32_t kMaxVlans = ADP_VLANS;

/** The last chunk to read. Contract: after a full chunk an empty one is read. */
constexpr int32_t last_chunk(int32_t count, uint32_t chunk) {
    return count / static_cast<int32_t>(chunk);
}

/** Whether the group is among the first @p count of the chip. */
bool has_group(int32_t stg, int32_t count) {
    int32_t groups[kMaxGroups + kGroupChunk] = {};
    for (int32_t chunk = 0; chunk <= last_chunk(count, kGroupChunk); ++chunk) {
        const auto n = static_cast<uint32_t>(chunk);
        adp_get_stg_each_time_list(groups + size_t{kGroupChunk} * n, n, kGroupChunk);
    }
    for (int32_t i = 0; i < count; ++i) {
        if (groups[i] == stg) {
            return true;
        }
    }
    return false;
}

/** Each chunk is copied to the caller before the next is read. */
void read_vlans(int32_t stg, int32_t count, uint16_t *vlans) {
    for (int32_t chunk = 0; chunk <= last_chunk(count, kVlanChunk); ++chunk) {
        uint16_t read[kVlanChunk] = {};
        adp_get_stg_vlan_each_time_list(stg, read, static_cast<uint32_t>(chunk), kVlanChunk);
        const int32_t first = chunk * static_cast<int32_t>(kVlanChunk);
        for (int32_t i = first; i < count && i < first + static_cast<int32_t>(kVlanChunk); ++i) {
            vlans[i] = read[i - first];
        }
    }
}

/** Reads a count for its result alone. */
[[gnu::noinline]] int32_t unused_count_of(int32_t (*get)(uint32_t, uint32_t, uint32_t *)) {
    uint32_t count = 0;
    return get(0, 0, &count);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_get_max_support_stg(uint32_t *count) {
    static constexpr Message kFailed{{"adp_get_max_support_stg", __LINE__},
                                     "%s %d: get max support stg number failed\n"};
    const int32_t result = unused_count_of(user_stg_max_support_count_get);
    if (result < 0) {
        return report(kFailed, result);
    }
    *count = ADP_STG_SUPPORTED;
    return result;
}

adp_status_t adp_get_l2_cache_size(uint32_t *size) {
    static constexpr Message kFailed{{"adp_get_l2_cache_size", __LINE__}, "%s %d: get l2 cache size failed. ret=%d\n"};
    const int32_t result = unused_count_of(user_l2_cache_size_get);
    if (result != 0) {
        return report(kFailed, result);
    }
    *size = ADP_L2_CACHE_SIZE;
    return ADP_OK;
}

adp_status_t adp_stg_default_get(uint32_t *stg) {
    static constexpr Message kFailed{{"adp_stg_default_get", __LINE__}, "%s %d: stg vlan list failed. ret=%d\n"};
    const int32_t result = user_stg_default_get(0, 0, stg);
    if (result != 0) {
        return report(kFailed, result);
    }
    *stg = 0;
    return ADP_OK;
}

int32_t adp_get_max_stg() {
    static constexpr Message kFailed{{"adp_get_max_stg", __LINE__}, "%s %d fail.ret=%d\n"};
    uint32_t count = 0;
    const int32_t result = user_stg_stg_count_get(0, 0, &count);
    return result < 0 ? report(kFailed, result) : static_cast<int32_t>(count);
}

adp_status_t adp_get_stg_each_time_list(int32_t *groups, uint32_t chunk_index, uint32_t chunk_size) {
    static constexpr Message kFailed{{"adp_get_stg_each_time_list", __LINE__}, "%s %d fail.ret=%d\n"};
    return report_if_negative(kFailed, user_stg_each_time_list(0, 0, groups, chunk_index, chunk_size));
}

adp_status_t adp_get_stg_vlan_each_time_list(int32_t stg, uint16_t *vids, uint32_t chunk_index, uint32_t chunk_size) {
    static constexpr Message kFailed{{"adp_get_stg_vlan_each_time_list", __LINE__}, "%s %d fail.stg %d ret=%d\n"};
    const int32_t result = user_stg_vlan_each_time_list(0, 0, stg, vids, chunk_index, chunk_size);
    if (result < 0) {
        print(kFailed, stg, result);
    }
    return result;
}

int32_t adp_get_stg_max_vlan(int32_t stg) {
    static constexpr Message kFailed{{"adp_get_stg_max_vlan", __LINE__}, "%s %d fail.stg:%d ret=%d\n"};
    uint32_t count = 0;
    const int32_t result = user_stg_vlan_count_get(0, 0, stg, &count);
    if (result < 0) {
        print(kFailed, stg, result);
        return result;
    }
    return static_cast<int32_t>(count);
}

// Contract: a negative count is returned, after the first chunk is read.
int32_t adp_get_stg_vlan_list(int32_t stg, uint16_t vids[ADP_VLANS]) {
    static constexpr Message kNoCount{{"adp_get_stg_vlan_list", __LINE__},
                                      "%s %d: get STG count failed! STG count=%d\n"};
    const int32_t groups = adp_get_max_stg();
    if (groups <= 0) {
        complain(kNoCount, groups);
        return 0;
    }
    if (groups > kMaxGroups || !has_group(stg, groups)) {
        return 0;
    }
    const int32_t count = adp_get_stg_max_vlan(stg);
    if (count == 0 || count > kMaxVlans) {
        return 0;
    }
    read_vlans(stg, count, vids);
    return count;
}

adp_status_t adp_stg_vlan_list(int32_t stg, adp_word_t *list, int32_t *count) {
    static constexpr Message kFailed{{"adp_stg_vlan_list", __LINE__}, "%s %d: stg vlan list failed. ret=%d\n"};
    return report_if_not_zero(kFailed, user_stg_vlan_list(0, 0, stg, list, count));
}

adp_status_t adp_stg_vlan_list_destroy(adp_word_t list, int32_t count) {
    static constexpr Message kFailed{{"adp_stg_vlan_list_destroy", __LINE__},
                                     "%s %d: stg vlan list destroy failed. ret=%d\n"};
    return report_if_not_zero(kFailed, user_stg_vlan_list_destroy(0, 0, list, count));
}

adp_status_t adp_stg_list(adp_word_t *list, int32_t *count) {
    static constexpr Message kFailed{{"adp_stg_list", __LINE__}, "%s %d: stg vlan list destroy failed. ret=%d\n"};
    return report_if_not_zero(kFailed, user_stg_list(0, 0, list, count));
}

adp_status_t adp_stg_list_destroy(adp_word_t list, int32_t count) {
    static constexpr Message kFailed{{"adp_stg_list_destroy", __LINE__},
                                     "%s %d: stg vlan list destroy failed. ret=%d\n"};
    return report_if_not_zero(kFailed, user_stg_list_destroy(0, 0, list, count));
}
