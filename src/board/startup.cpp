// Start-up of the switch's protocol features, step by step.
#include <adp/fp.h>
#include <adp/startup.h>
#include <netlink_api.h>
#include <stdio.h>
#include <string.h>

namespace adp {
namespace {

// The driver's numbers of the chip-wide controls that start-up sets.
constexpr uint32_t kIpv6Control = 89;
constexpr uint32_t kIgmpToCpuControl = 92;
constexpr uint32_t kMirrorControl = 125;
constexpr uint32_t kReservedMulticastControl = 215;
constexpr uint32_t kOn = 1;

// Source lines are part of the messages' fixed texts.
constexpr int kClearFailedLine = 96;
constexpr int kWriteFreeFailedLine = 156;
constexpr int kWriteUnreadFailedLine = 172;
constexpr int kStgFailedLine = 251;
constexpr int kLldpFailedLine = 265;

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

/** The line of the message if the entry's write fails, 0 when the entry is in use. */
int line_if_writable(uint32_t index) {
    Mac mac = kNoMac;
    if (read_entry(index, &mac) != 0) {
        return kWriteUnreadFailedLine;
    }
    return mac == kNoMac ? kWriteFreeFailedLine : 0;
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

adp_status_t adp_modules_init() {
    adp_status_t status = l2_user_entry_init();
    if (status < 0) {
        printf("%s ERROR\n", "adp_modules_init");
        return status;
    }
    for (const adp::Step &step : adp::kSteps) {
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
    for (uint32_t index = 0; index < adp::kReservedEntries; ++index) {
        adp::Mac mac = adp::kNoMac;
        if (adp::read_entry(index, &mac) != 0 || mac != adp::kFirstReserved) {
            continue;
        }
        const int32_t result = adp::write_entry(index, adp::kNoMac);
        if (result != 0) {
            printf("%s %d ret = %d  i = %d ERROR\n", "l2_user_entry_del_all_bpdu", adp::kClearFailedLine, result,
                   static_cast<int>(index));
            return ADP_FAIL;
        }
    }
    return ADP_OK;
}

adp_status_t l2_user_entry_add_all_bpdu() {
    uint32_t next = 0;
    for (uint32_t index = 0; index < adp::kReservedEntries && next < adp::kReservedAddresses; ++index) {
        const int line = adp::line_if_writable(index);
        if (line == 0) {
            continue;
        }
        if (adp::write_entry(index, adp::reserved_address(next)) != 0) {
            printf("%s %d i = %d ERROR\n", "l2_user_entry_add_all_bpdu", line, static_cast<int>(index));
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
        fprintf(stderr, "%s %d: MSTP set bcmSwitchCpuProtoBpduPriority failed!\n", "adp_stg_init", adp::kStgFailedLine);
    }
    return result;
}

adp_status_t adp_lldp_init() {
    const int32_t result = user_lldp_init(0, 0);
    if (result < 0) {
        fprintf(stderr, "%s %d:LLDP set default handle failed!\n", "adp_lldp_init", adp::kLldpFailedLine);
    }
    return result;
}

adp_status_t adp_mirror_init() {
    const int32_t result = user_mirror_init(0, 0);
    user_switch_control_set(0, 0, adp::kMirrorControl, adp::kOn);
    return result;
}

// Only the last read decides: that the controls could not be set is shown but not returned.
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
    result = user_switch_control_get(0, 0, adp::kIgmpToCpuControl, &enable);
    if (result != 0) {
        printf("ret:%d bcmSwitchIgmpPktToCpu:%d enable:%d \n", result, static_cast<int>(adp::kIgmpToCpuControl),
               static_cast<int>(enable));
    }
    result = user_switch_control_set(0, 0, adp::kReservedMulticastControl, adp::kOn);
    if (result != 0) {
        printf("ret:%d bcmSwitchIgmpReservedMcastEnable:%d \n", result,
               static_cast<int>(adp::kReservedMulticastControl));
    }
    result = user_switch_control_set(0, 0, adp::kIgmpToCpuControl, adp::kOn);
    if (result != 0) {
        printf("set igmp packet to cpu fail ret:%d\n", result);
    }
    result = user_switch_control_get(0, 0, adp::kIgmpToCpuControl, &enable);
    if (result != 0) {
        printf(" ret:%d enable:%d\n", result, static_cast<int>(enable));
    }
    return result;
}

adp_status_t ipv6_user_init() {
    user_switch_control_set(0, 0, adp::kIpv6Control, adp::kOn);
    return ADP_OK;
}

adp_status_t adp_dos_attack_init() {
    return user_dos_attack_prevent_init(0, 0);
}
