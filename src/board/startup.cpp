// Start-up of the switch's protocol features, step by step.
#include <adp/fp.h>
#include <adp/startup.h>
#include <netlink_api.h>
#include <stdio.h>
#include <string.h>

#include "core/messages.h"

namespace adp {
namespace {

// The driver's numbers of the chip-wide controls that start-up sets.
constexpr uint32_t kIpv6Control = 89;
constexpr uint32_t kIgmpToCpuControl = 92;
constexpr uint32_t kMirrorControl = 125;
constexpr uint32_t kReservedMulticastControl = 215;
constexpr uint32_t kOn = 1;

constexpr Message kClearFailed{{"l2_user_entry_del_all_bpdu", 96}, "%s %d ret = %d  i = %d ERROR\n"};
constexpr char kWriteFormat[] = "%s %d i = %d ERROR\n";
constexpr Message kWriteFreeFailed{{"l2_user_entry_add_all_bpdu", 156}, kWriteFormat};
constexpr Message kWriteUnreadFailed{{"l2_user_entry_add_all_bpdu", 172}, kWriteFormat};
constexpr Message kStgFailed{{"adp_stg_init", 251}, "%s %d: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n"};
constexpr Message kLldpFailed{{"adp_lldp_init", 265}, "%s %d:LLDP set default handle failed!\n"};

constexpr uint32_t kReservedEntries = 64;
constexpr uint32_t kReservedAddresses = 16;

struct Mac {
    uint8_t byte[6];

    constexpr bool operator==(const Mac &) const = default;
};

constexpr Mac kNoMac{};
constexpr Mac kFirstReserved{{0x01, 0x80, 0xC2, 0x00, 0x00, 0x00}};

Mac reserved_address(uint32_t number) {
    Mac mac = kFirstReserved;
    mac.byte[sizeof mac - 1] = static_cast<uint8_t>(number);
    return mac;
}

int32_t read_entry(uint32_t index, Mac *mac) {
    return user_l2_bpdu_get(0, 0, index, mac->byte);
}

int32_t write_entry(uint32_t index, const Mac &mac) {
    return user_l2_bpdu_set(0, 0, index, mac.byte);
}

/** The message for a failed write of the entry; null if the entry is in use. */
const Message *message_if_writable(uint32_t index) {
    Mac mac = kNoMac;
    if (read_entry(index, &mac) != 0) {
        return &kWriteUnreadFailed;
    }
    return mac == kNoMac ? &kWriteFreeFailed : nullptr;
}

/** A step of the start-up and what is printed when it fails. */
struct Step {
    adp_status_t (*run)();
    const char *message;
};

constexpr Step kSteps[] = {
    {adp_fp_init, "switch fp init fail "},
    {adp_trunk_init, "switch trunk init fail "},
    {adp_stg_init, "switch stg init fail "},
    {adp_lldp_init, "switch lldp init fail"},
    {adp_mirror_init, "switch mirror init fail "},
    {adp_igmp_init, "switch igmp init fail "},
    {ipv6_user_init, nullptr},
    {adp_dos_attack_init, "switch dos init fail "},
};

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_modules_init() {
    adp_status_t status = l2_user_entry_init();
    if (status < 0) {
        printf("%s ERROR\n", "adp_modules_init");
        return status;
    }
    for (const Step &step : kSteps) {
        status = step.run();
        if (status < 0) {
            puts(step.message);
            return status;
        }
    }
    return status;
}

adp_status_t l2_user_entry_init() {
    adp_status_t status = l2_user_entry_del_all_bpdu();
    if (status != ADP_OK) {
        printf("%s l2_user_entry_del_all_bpdu ERROR!\n", "l2_user_entry_init");
        return status;
    }
    status = l2_user_entry_add_all_bpdu();
    if (status != ADP_OK) {
        printf("%s l2_user_entry_add_all_bpdu  ERROR!\n", "l2_user_entry_init");
    }
    return status;
}

adp_status_t l2_user_entry_del_all_bpdu() {
    for (uint32_t index = 0; index < kReservedEntries; ++index) {
        Mac mac = kNoMac;
        if (read_entry(index, &mac) != 0 || mac != kFirstReserved) {
            continue;
        }
        const int32_t result = write_entry(index, kNoMac);
        if (result != 0) {
            print(kClearFailed, result, static_cast<int32_t>(index));
            return ADP_FAIL;
        }
    }
    return ADP_OK;
}

adp_status_t l2_user_entry_add_all_bpdu() {
    uint32_t next = 0;
    for (uint32_t index = 0; index < kReservedEntries && next < kReservedAddresses; ++index) {
        const Message *failed = message_if_writable(index);
        if (failed == nullptr) {
            continue;
        }
        if (write_entry(index, reserved_address(next)) != 0) {
            print(*failed, static_cast<int32_t>(index));
            return ADP_FAIL;
        }
        ++next;
    }
    return ADP_OK;
}

adp_status_t adp_trunk_init() {
    return user_trunk_init(0, 0);
}

adp_status_t adp_stg_init() {
    const int32_t result = user_stg_init(0, 0);
    if (result < 0) {
        complain(kStgFailed);
    }
    return result;
}

adp_status_t adp_lldp_init() {
    const int32_t result = user_lldp_init(0, 0);
    if (result < 0) {
        complain(kLldpFailed);
    }
    return result;
}

adp_status_t adp_mirror_init() {
    const int32_t result = user_mirror_init(0, 0);
    user_switch_control_set(0, 0, kMirrorControl, kOn);
    return result;
}

// Contract: the last read decides the result; a control that could not be set is only printed.
adp_status_t adp_igmp_init() {
    int32_t result = user_igmp_snooping_init(0, 0);
    if (result < 0) {
        return result;
    }
    result = User_mcast_init(0, 0);
    if (result < 0) {
        return result;
    }
    uint32_t enable = 0;
    result = user_switch_control_get(0, 0, kIgmpToCpuControl, &enable);
    if (result != 0) {
        printf("ret:%d bcmSwitchIgmpPktToCpu:%d enable:%d \n", result, static_cast<int>(kIgmpToCpuControl),
               static_cast<int>(enable));
    }
    result = user_switch_control_set(0, 0, kReservedMulticastControl, kOn);
    if (result != 0) {
        printf("ret:%d bcmSwitchIgmpReservedMcastEnable:%d \n", result, static_cast<int>(kReservedMulticastControl));
    }
    result = user_switch_control_set(0, 0, kIgmpToCpuControl, kOn);
    if (result != 0) {
        printf("set igmp packet to cpu fail ret:%d\n", result);
    }
    result = user_switch_control_get(0, 0, kIgmpToCpuControl, &enable);
    if (result != 0) {
        printf(" ret:%d enable:%d\n", result, static_cast<int>(enable));
    }
    return result;
}

adp_status_t ipv6_user_init() {
    user_switch_control_set(0, 0, kIpv6Control, kOn);
    return ADP_OK;
}

adp_status_t adp_dos_attack_init() {
    return user_dos_attack_prevent_init(0, 0);
}
