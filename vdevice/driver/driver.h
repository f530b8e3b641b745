// The driver calls and the device's services, carried out on the virtual switch chip. Calls that are not overridden
// here answer kNotSupported.
#pragma once

#include <functional>

#include "generated/driver_calls.h"
#include "vdevice/chip/switch.h"
#include "vdevice/driver/board.h"
#include "vdevice/driver/codes.h"
#include "vdevice/driver/event_queue.h"
#include "vdevice/driver/groups.h"
#include "vdevice/driver/journal.h"

namespace vdevice::driver {

class Driver : public DriverCalls {
  public:
    using Clock = std::function<chip::Time()>;

    /** The chip must outlive the driver; @p clock stamps log lines and events. */
    Driver(chip::Switch &chip, Board board, Clock clock);

    const Board &board() const { return board_; }
    const Journal &journal() const { return journal_; }
    const EventQueue &events() const { return events_; }
    Groups &groups() { return groups_; }
    const Groups &groups() const { return groups_; }
    /** What sys_trace_get() answers. */
    void set_trace(std::int32_t trace) { trace_ = trace; }

    // VLANs
    int32_t user_vlan_create(uint32_t unit, uint32_t zero, uint32_t vid) override;
    int32_t user_vlan_createEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid) override;
    int32_t user_vlan_destroy(uint32_t unit, uint32_t zero, uint32_t vid) override;
    int32_t user_vlan_destroyEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid) override;
    int32_t user_vlan_port_add(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *ports,
                               const uint32_t *untagged) override;
    int32_t user_vlan_port_addEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                 const uint32_t *ports, const uint32_t *untagged) override;
    int32_t user_vlan_port_remove(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *ports) override;
    int32_t user_vlan_port_removeEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                    const uint32_t *ports) override;
    int32_t user_vlan_port_set(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *members,
                               const uint32_t *untagged) override;
    int32_t user_vlan_port_get(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t *members,
                               uint32_t *untagged) override;
    int32_t user_vlan_default_set(uint32_t unit, uint32_t zero, uint32_t vid) override;
    int32_t user_vlan_default_get(uint32_t unit, uint32_t zero, uint32_t *vid) override;
    int32_t user_port_untagged_vlan_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t vid) override;
    int32_t user_port_untagged_vlan_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *vid) override;

    // Ports
    int32_t user_port_enable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) override;
    int32_t user_port_enable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) override;
    int32_t user_port_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) override;
    int32_t user_fiberport_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) override;

    // The device's services
    int32_t log_line(int32_t level, int32_t module, const char *word, const char *text) override;
    int32_t sys_trace_get() override;
    int32_t sys_trace_add_log(const char *prefix, const char *message) override;
    int32_t equeue_send_ucast(uintptr_t queue, const uintptr_t *message, int32_t timeout) override;
    int32_t link_event_handle_cb(uint32_t intf, int32_t status) override;
    int32_t get_vlan_info(uint32_t vid, uint8_t *record) override;
    int32_t get_group_by_interface(uint32_t intf, uint32_t *group) override;
    int32_t add_mac_static_addr(const char *mac, uint32_t intf, uint32_t vid, uint32_t flag) override;
    int32_t del_mac_addr(const char *mac, uint32_t vid, uint32_t flag) override;
    int32_t set_mac_tbl_clear_by_port(uint32_t intf, uint32_t scope, uint32_t kind) override;

  private:
    chip::PortSet interfaces_of(const chip::PortSet &chip_ports) const;
    int32_t read_port(uint32_t unit, uint32_t zero, int32_t port, uint32_t *out,
                      const std::function<uint32_t(const chip::Port &)> &value) const;

    chip::Switch &chip_;
    Board board_;
    Clock clock_;
    Journal journal_;
    EventQueue events_;
    Groups groups_;
    std::int32_t trace_ = 0;
};

}  // namespace vdevice::driver
