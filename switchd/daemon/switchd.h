// The daemon's core: joins the kernel's state, the switch, aggregation groups, port authorisation and frames.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "switchd/daemon/configuration.h"
#include "switchd/daemon/dot1x.h"
#include "switchd/daemon/links.h"
#include "switchd/daemon/log.h"
#include "switchd/daemon/timer.h"
#include "switchd/daemon/traffic.h"
#include "switchd/groups/groups.h"
#include "switchd/kernel/monitor.h"
#include "switchd/kernel/requests.h"
#include "switchd/mirror/applier.h"
#include "switchd/mirror/learned.h"
#include "switchd/mirror/wanted.h"
#include "vdevice/io/event_loop.h"

namespace switchd {

class Switchd {
  public:
    /**
     * Takes the switch over: as an earlier daemon has left it, or anew. Throws a vdevice::io::Error if the driver, the
     * CPU's interface or the kernel's configuration cannot be had.
     */
    Switchd(vdevice::io::EventLoop &loop, const Configuration &configuration, const Log &log,
            const std::string &run_dir);
    ~Switchd();
    Switchd(const Switchd &) = delete;
    Switchd &operator=(const Switchd &) = delete;

    /** Another configuration of the same board. */
    void configure(const Configuration &configuration);
    void every_second();
    /** A clean end: every port is alone again, and the interfaces are gone. */
    void end();

    // What the control socket asks for. Refusals are vdevice::io::Errors.
    std::string add(const std::string &name);
    std::string remove(const std::string &name);
    std::string resync();
    std::string authorize(const std::string &name, const std::optional<Mac> &station, bool is_let_in);
    nlohmann::json status() const;
    /** The interfaces whose counters there are. */
    std::vector<uint32_t> counted() const;
    uint32_t counted_named(const std::string &name) const { return port_named(name, false).intf; }

  private:
    lacp::SystemId lacp_system() const;
    std::string group_file() const { return run_dir_ + "/groups"; }
    void open_groups();
    void open_interfaces();
    void set_mtus();
    std::map<uint32_t, Dot1xControl> dot1x_ports() const;
    bool is_port(const PortName &port) const;
    /** Throws a vdevice::io::Error with a sentence if there is no such port, or it has a tag where none is wanted. */
    PortName port_named(const std::string &name, bool has_tag) const;

    void link_changed(uint32_t port, bool is_up);
    /** Brings the switch to what the kernel has, within some milliseconds: many changes are one. */
    void reconcile_soon();
    void reconcile();
    void follow_groups_soon();
    bool follow_groups();
    void mirror();
    Plan plan();
    std::set<int> new_queriers();
    void follow_admin_states();
    void follow_vlans();
    void add_path_ports(PathTable &table) const;
    void add_path_groups(PathTable &table) const;
    PathTable path_table() const;
    void tell_kernel(const LearnedChanges &changes);
    void note_remarks(Remarks remarks);
    void note_failures(const std::vector<std::string> &sentences) const;

    const Link *link_of(const PortName &port) const;
    nlohmann::json bridges() const;
    nlohmann::json bridge_ports(int bridge) const;
    nlohmann::json ports() const;
    nlohmann::json groups() const;
    nlohmann::json frame_counters() const;

    vdevice::io::EventLoop &loop_;
    const Log &log_;
    std::string run_dir_;
    Configuration configuration_;
    std::set<PortName> asked_for_; /**< interfaces with tags, by command */
    Mac base_mac_;
    bool was_in_use_ = false; /**< the chip goes on as a killed daemon has left it */
    KernelRequests requests_;
    Dot1x dot1x_;
    Groups groups_;
    Traffic traffic_;
    Timer soon_;
    Timer protocol_clock_;
    std::unique_ptr<Links> links_;
    KernelMonitor monitor_;
    std::unique_ptr<Applier> applier_;
    LearnedAddresses learned_;
    Wanted wanted_;
    Remarks remarks_;
    std::map<uint32_t, bool> enabled_;   /**< of each user port, as the chip was told */
    std::map<int, Time> querying_since_; /**< of each bridge that sends queries */
    std::set<int> young_queriers_;       /**< as the plan had them last */
    bool is_due_ = false;
    bool have_groups_changed_ = false;
    Time synced_since_{};
    uint32_t seconds_ = 0;
    size_t interfaces_there_ = 0; /**< when they were opened */
};

}  // namespace switchd
