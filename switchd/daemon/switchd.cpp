// What happens when something changes: in the kernel, on a port, by the protocol, by a command.
#include "switchd/daemon/switchd.h"

#include <adp/adp.h>
#include <sys/epoll.h>

#include <algorithm>
#include <utility>

#include "switchd/daemon/board.h"
#include "switchd/ports/interface_marks.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using std::chrono::milliseconds;
using vdevice::LogLevel;

constexpr milliseconds kProtocolTick{100};
/** Entries of the chip's address table that are looked at at a time: some milliseconds of driver calls. */
constexpr size_t kEntriesAtOnce = 1024;
/** What the switch has refused is tried again so often. */
constexpr uint32_t kRetrySeconds = 10;

std::vector<uint8_t> octets_of(const vdevice::chip::Frame &frame) {
    std::vector<uint8_t> octets(frame.size());
    frame.copy_to(octets.data());
    return octets;
}

}  // namespace

Switchd::Switchd(vdevice::io::EventLoop &loop, const Configuration &configuration, const Log &log,
                 const std::string &run_dir)
    : loop_{loop},
      log_{log},
      run_dir_{run_dir},
      configuration_{configuration},
      base_mac_{base_mac_of(configuration)},
      dot1x_{run_dir + "/dot1x"},
      groups_{[this](uint32_t port, std::span<const uint8_t> frame) { traffic_.send(port, frame); }},
      traffic_{loop, configuration, base_mac_, run_dir + "/keeper",
               [this](uint32_t port, const vdevice::chip::Frame &frame) {
                   groups_.receive(port, octets_of(frame), now());
                   follow_groups_soon();
               }},
      soon_{loop, [this] { reconcile(); }},
      protocol_clock_{loop, [this] {
                          groups_.tick(now());
                          follow_groups_soon();
                      }} {
    fill_port_map(configuration_);
    was_in_use_ = is_chip_in_use(configuration_);
    if (was_in_use_) {
        dot1x_.adopt();
    } else {
        initialise_chip();
    }
    for (const FoundLink &link : find_links()) {
        if (const auto port = marked_port_of(link); port && port->vid != 0 && is_port({port->intf, 0})) {
            asked_for_.insert(*port);
        }
    }
    note_failures(dot1x_.configure(dot1x_ports()));
    links_ = std::make_unique<Links>(loop_, configuration_.user_ports,
                                     [this](uint32_t port, bool is_up) { link_changed(port, is_up); });
    open_groups();
    open_interfaces();
    loop_.add(monitor_.fd(), EPOLLIN, [this](uint32_t) {
        if (monitor_.receive()) {
            reconcile_soon();
        }
    });
    applier_ = std::make_unique<Applier>(plan());
    reconcile();
    protocol_clock_.start_periodic(kProtocolTick);
}

Switchd::~Switchd() {
    loop_.remove(monitor_.fd());
}

// What people are told

void Switchd::note_remarks(Remarks remarks) {
    std::sort(remarks.begin(), remarks.end());
    Remarks fresh;
    std::set_difference(remarks.begin(), remarks.end(), remarks_.begin(), remarks_.end(), std::back_inserter(fresh));
    for (const Remark &remark : fresh) {
        log_.write(LogLevel::kWarning, "not in hardware: " + remark.subject + " " + remark.sentence);
    }
    remarks_ = std::move(remarks);
}

void Switchd::note_failures(const std::vector<std::string> &sentences) const {
    for (const std::string &sentence : sentences) {
        log_.write(LogLevel::kError, sentence);
    }
}

// From outside

void Switchd::configure(const Configuration &configuration) {
    configuration_ = configuration;
    traffic_.configure(configuration_);
    note_failures(dot1x_.configure(dot1x_ports()));
    open_groups();
    open_interfaces();
    reconcile_soon();
}

std::string Switchd::resync() {
    monitor_.resync();
    applier_ = std::make_unique<Applier>(plan());
    reconcile();
    return "The kernel and the switch were read again.";
}

void Switchd::every_second() {
    ++seconds_;
    try {
        traffic_.reopen();
    } catch (const vdevice::io::Error &error) {
        log_.write(LogLevel::kError, error.what());
    }
    if (traffic_.interfaces().all().size() != interfaces_there_) {  // somebody has removed one
        open_interfaces();
        reconcile_soon();
    }
    const bool has_changed = monitor_.refresh_bridges();
    const std::set<int> before = young_queriers_;
    if (has_changed || seconds_ % kRetrySeconds == 0 || new_queriers() != before) {
        reconcile_soon();
    }
    if (seconds_ % configuration_.learned_seconds == 0) {
        tell_kernel(learned_.walk(kEntriesAtOnce));
        // The kernel has announced these by now: one that goes from now on was flushed by somebody.
        if (monitor_.receive()) {
            reconcile_soon();
        }
        tell_kernel(learned_.follow(monitor_.state(), wanted_));
    }
}

void Switchd::end() {
    Plan alone = plan();
    alone.interfaces.clear();
    note_remarks(applier_->apply(wanted_of({}, alone).state));
    note_failures(dot1x_.configure({}));  // nobody else would open them
    groups_.configure({lacp_system(), {}}, now());
    groups_.remove_idle(now());
    traffic_.interfaces().remove_all();
}

}  // namespace switchd
