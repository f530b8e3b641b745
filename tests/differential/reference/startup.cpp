// Start-up of the modules.
#include <cstdio>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

using Mac = std::array<uint8_t, 6>;

constexpr Mac reserved_mac(uint32_t k) {
    return {0x01, 0x80, 0xC2, 0x00, 0x00, static_cast<uint8_t>(k)};
}

}  // namespace

adp_status_t adp_modules_init() {
    int32_t result = l2_user_entry_init();
    if (result < 0) {
        printf("%s ERROR\n", "adp_modules_init");
        return result;
    }
    const struct {
        adp_status_t (*step)();
        const char *message;
    } steps[] = {{adp_fp_init, "switch fp init fail "},
                 {adp_trunk_init, "switch trunk init fail "},
                 {adp_stg_init, "switch stg init fail "},
                 {adp_lldp_init, "switch lldp init fail"},
                 {adp_mirror_init, "switch mirror init fail "},
                 {adp_igmp_init, "switch igmp init fail "},
                 {ipv6_user_init, nullptr},
                 {adp_dos_attack_init, "switch dos init fail "}};
    for (const auto &each : steps) {
        result = each.step();
        if (result < 0 && each.message != nullptr) {
            printf("%s\n", each.message);
            return result;
        }
    }
    return result;
}

adp_status_t l2_user_entry_init() {
    if (l2_user_entry_del_all_bpdu() != 0) {
        printf("%s l2_user_entry_del_all_bpdu ERROR!\n", "l2_user_entry_init");
        return -1;
    }
    if (l2_user_entry_add_all_bpdu() != 0) {
        printf("%s l2_user_entry_add_all_bpdu  ERROR!\n", "l2_user_entry_init");
        return -1;
    }
    return 0;
}

adp_status_t l2_user_entry_del_all_bpdu() {
    for (uint32_t i = 0; i < 64; ++i) {
        Mac mac{};
        if (user_l2_bpdu_get(0, 0, i, mac.data()) != 0 || mac != reserved_mac(0)) {
            continue;
        }
        const int32_t result = user_l2_bpdu_set(0, 0, i, Mac{}.data());
        if (result != 0) {
            printf("%s %d ret = %d  i = %d ERROR\n", "l2_user_entry_del_all_bpdu", 96, result, static_cast<int>(i));
            return -1;
        }
    }
    return 0;
}

adp_status_t l2_user_entry_add_all_bpdu() {
    uint32_t k = 0;
    for (uint32_t i = 0; i < 64 && k < 16; ++i) {
        Mac mac{};
        const bool unreadable = user_l2_bpdu_get(0, 0, i, mac.data()) != 0;
        if (!unreadable && mac != Mac{}) {
            continue;
        }
        if (user_l2_bpdu_set(0, 0, i, reserved_mac(k++).data()) != 0) {
            printf("%s %d i = %d ERROR\n", "l2_user_entry_add_all_bpdu", unreadable ? 172 : 156, static_cast<int>(i));
            return -1;
        }
    }
    return 0;
}

adp_status_t adp_stg_init() {
    const int32_t result = user_stg_init(0, 0);
    if (result < 0) {
        fprintf(stderr, "%s %d: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n", "adp_stg_init", 251);
    }
    return result;
}

adp_status_t adp_lldp_init() {
    const int32_t result = user_lldp_init(0, 0);
    if (result < 0) {
        fprintf(stderr, "%s %d:LLDP set default handle failed!\n", "adp_lldp_init", 265);
    }
    return result;
}

adp_status_t adp_mirror_init() {
    const int32_t result = user_mirror_init(0, 0);
    user_switch_control_set(0, 0, 125, 1);
    return result;
}

adp_status_t adp_igmp_init() {
    int32_t result = user_igmp_snooping_init(0, 0);
    if (result < 0) {
        return result;
    }
    result = User_mcast_init(0, 0);
    if (result < 0) {
        return result;
    }
    uint32_t value = 0;
    result = user_switch_control_get(0, 0, 92, &value);
    if (result != 0) {
        printf("ret:%d bcmSwitchIgmpPktToCpu:%d enable:%d \n", result, 92, static_cast<int>(value));
    }
    result = user_switch_control_set(0, 0, 215, 1);
    if (result != 0) {
        printf("ret:%d bcmSwitchIgmpReservedMcastEnable:%d \n", result, 215);
    }
    result = user_switch_control_set(0, 0, 92, 1);
    if (result != 0) {
        printf("set igmp packet to cpu fail ret:%d\n", result);
    }
    result = user_switch_control_get(0, 0, 92, &value);
    if (result != 0) {
        printf(" ret:%d enable:%d\n", result, static_cast<int>(value));
    }
    return result;
}

}  // namespace reference
