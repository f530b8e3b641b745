// Start-up, link events, last-change times, mirroring and I/O pins.
#include <pthread.h>

#include <cstdio>
#include <cstring>
#include <ctime>

#include "platform/device_services.h"
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

adp_status_t adp_trunk_init() {
    return user_trunk_init(0, 0);
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

adp_status_t ipv6_user_init() {
    user_switch_control_set(0, 0, 89, 1);
    return 0;
}

adp_status_t adp_dos_attack_init() {
    return user_dos_attack_prevent_init(0, 0);
}

// Link events and last-change times

adp_status_t adp_set_port_last_change(adp_intf_t intf) {
    const auto stamp = [](uint32_t port) {
        if (port >= 1 && port <= 26) {
            tables.last_change[port] = static_cast<uint32_t>(time(nullptr));
        }
    };
    if (is_user_port(intf)) {
        stamp(intf);
        return 0;
    }
    if (!is_agg(intf)) {
        return 201;
    }
    if (!is_group(intf)) {
        return -1;
    }
    const Members members = configured_members(intf);
    for (uint32_t n = 0; n < members.count; ++n) {
        stamp(members.slots[n]);
    }
    return 0;
}

adp_status_t adp_get_port_last_change(int32_t intf, uint32_t *out) {
    *out = 0;
    auto port = static_cast<uint32_t>(intf);
    if (type_of(port) > 1) {
        return 201;
    }
    if (is_agg(port)) {
        const uint32_t agg = port;
        if (!is_group(agg)) {
            return -1;
        }
        port = manager_of(agg);
        if (port == 0) {
            GET_AGG_CONFIG_MIN_INTF(agg, &port);
        }
        if (port == 0) {
            return 203;
        }
    }
    const auto found = tables.last_change.find(port);
    *out = found == tables.last_change.end() ? 0 : found->second;
    return 0;
}

int32_t adp_link_event_handle_cb(uint32_t unit, uint32_t port, int32_t status) {
    const auto intf = static_cast<uint32_t>(adp_phy_2_intf_id_ex(unit, port));
    uint32_t state = 0;
    adp_get_phy_port_attr(intf, 3, &state);
    if ((intf == 25 || intf == 26) && state == 0) {
        return 0;
    }
    return ::link_event_handle_cb(intf, status);
}

int32_t adp_link_event_fast_send_unicast_msg(uint32_t unit, uint32_t port, int32_t status) {
    const int32_t intf = adp_phy_2_intf_id_ex(unit, port);
    if (intf < 0 || intf > 26) {
        return -1;
    }
    adp_link_data_t &data = tables.link_data[static_cast<size_t>(intf)];
    data = {static_cast<uint16_t>(unit), static_cast<uint16_t>(port), static_cast<uint16_t>(intf),
            static_cast<uint16_t>(status)};
    const uintptr_t message[8] = {1, static_cast<uintptr_t>(pthread_self()), 1, 0, 0, 0,
                                  0, reinterpret_cast<uintptr_t>(&data)};
    const int32_t result = equeue_send_ucast(erps_event_queue, message, -1);
    if (result > 0) {
        return result;
    }
    return fprintf(stderr, "[%s:%d]Send link event message to ERPS FAILED!\n", "adp_link_event_fast_send_unicast_msg",
                   113);
}

int32_t adp_link_event_fast_send_unicast_msg_ex(int32_t intf, int32_t status) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(intf));
    return adp_link_event_fast_send_unicast_msg(0, static_cast<uint32_t>(port), status);
}

// Mirroring

adp_status_t adp_add_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t directions, uint32_t session) {
    const uint32_t mode = (directions & 1 ? 2u : 0u) + (directions & 2 ? 4u : 0u);
    if (mode == 0) {
        return 0;
    }
    return user_mirror_port_set(0, 0, adp_intf_2_phy_id(source), session - 1, adp_intf_2_phy_id(destination), mode);
}

adp_status_t adp_del_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t /*unused*/, uint32_t session) {
    return user_mirror_port_set(0, 0, adp_intf_2_phy_id(source), session - 1, adp_intf_2_phy_id(destination), 0);
}

adp_status_t adp_set_flow_mirror(adp_intf_t intf, uint32_t session) {
    return user_set_flow_mirror(0, 0, session - 1, adp_intf_2_phy_id(intf));
}

adp_status_t adp_set_mirror_disable(uint32_t session, uint32_t /*unused2*/, uint32_t /*unused3*/, adp_word_t value) {
    return user_set_mirror_disable(0, 0, session - 1, value);
}

adp_status_t adp_check_set_mirror_disable(uint32_t session, uint32_t /*unused2*/, uint32_t /*unused3*/,
                                          adp_word_t value) {
    return user_check_set_mirror_disable(0, 0, session - 1, value);
}

// I/O pins

namespace {

constexpr uint32_t kInput = 0x2000;
constexpr uint32_t kOutput = 0x2004;
constexpr uint32_t kDirection = 0x2008;

adp_status_t change_bit(uint32_t address, uint32_t pin, uint32_t value) {
    uint32_t word = 0;
    user_pci_read(0, 0, address, &word);
    if (value == 1) {
        word |= 1u << pin % 32;
    } else if (value == 0) {
        word &= ~(1u << pin % 32);
    }
    return user_pci_write(0, 0, address, &word);
}

}  // namespace

adp_status_t hal_gpio_register_init() {
    const uint32_t pins = 9;
    return user_pci_write(0, 0, kDirection, &pins);
}

adp_status_t hal_set_gpio_direct(uint32_t pin, uint32_t value) {
    return change_bit(kDirection, pin, value);
}

adp_status_t hal_set_gpio_write_bit(uint32_t pin, uint32_t value) {
    return change_bit(kOutput, pin, value);
}

int32_t hal_get_gpio_val(uint32_t pin) {
    uint32_t word = 0;
    user_pci_read(0, 0, kInput, &word);
    return pin < 4 ? static_cast<int32_t>(word >> pin & 1) : 0;
}

adp_status_t hal_reverse_gpio(uint32_t pin) {
    uint32_t word = 0;
    user_pci_read(0, 0, kOutput, &word);
    word ^= 1u << pin % 32;
    return user_pci_write(0, 0, kOutput, &word);
}

adp_status_t adp_gpio_register_init() {
    return hal_gpio_register_init();
}

adp_status_t adp_set_gpio_direct(uint32_t pin, uint32_t value) {
    return hal_set_gpio_direct(pin, value);
}

adp_status_t adp_set_gpio_write_bit(uint32_t pin, uint32_t value) {
    return hal_set_gpio_write_bit(pin, value);
}

int32_t adp_get_gpio_val(uint32_t pin) {
    return hal_get_gpio_val(pin);
}

adp_status_t adp_reverse_gpio(uint32_t pin) {
    return hal_reverse_gpio(pin);
}

}  // namespace reference
