// Compares what is wanted with what is there.
#include "switchd/ports/interfaces.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "switchd/kernel/requests.h"
#include "switchd/ports/interface_marks.h"
#include "switchd/ports/tap_interface.h"
#include "vdevice/io/error.h"

namespace switchd {

Interfaces::Interfaces(vdevice::io::EventLoop &loop, InterfaceSettings settings, const std::string &keeper_path,
                       Handler on_frames)
    : loop_{loop}, settings_{settings}, on_frames_{std::move(on_frames)} {
    if (keeper_path.empty()) {
        return;
    }
    if (settings_.kind == InterfaceKind::kTap) {
        keeper_.emplace(keeper_path);
        kept_ = keeper_->held();
    } else {
        unlink(keeper_path.c_str());  // a predecessor's keeper ends
    }
}

Interfaces::~Interfaces() {
    for (const auto &[port, interface] : interfaces_) {
        loop_.remove(interface->fd());
    }
}

std::vector<std::string> Interfaces::set_wanted(const std::set<PortName> &wanted) {
    forget_gone();
    std::vector<PortName> unwanted;
    for (const auto &[port, interface] : interfaces_) {
        if (!wanted.contains(port)) {
            unwanted.push_back(port);
        }
    }
    for (const PortName &port : unwanted) {
        remove(port);
    }
    remove_leftovers(wanted);
    std::vector<std::string> refusals;
    const std::vector<FoundLink> links = find_links();
    for (const PortName &port : wanted) {
        try {
            if (!interfaces_.contains(port)) {
                make(port, links);
            }
        } catch (const vdevice::io::Error &error) {
            refusals.emplace_back(error.what());
        }
    }
    return refusals;
}

void Interfaces::make(const PortName &port, const std::vector<FoundLink> &links) {
    vdevice::UniqueFd kept;
    if (const auto found = kept_.find(name_of(port)); found != kept_.end()) {
        kept = std::move(found->second);
        kept_.erase(found);
    }
    std::unique_ptr<Interface> made = make_interface(port, settings_, links, std::move(kept));
    loop_.add(made->fd(), EPOLLIN, [this, port](uint32_t events) { handle(port, events); });
    if (keeper_ && made->kept_fd() >= 0) {
        keeper_->hold(name_of(port), made->kept_fd());
    }
    if (const auto carrier = carrier_.find(port.intf); carrier != carrier_.end()) {
        made->set_carrier(carrier->second);
    }
    interfaces_[port] = std::move(made);
}

void Interfaces::remove(const PortName &port) {
    const auto found = interfaces_.find(port);
    loop_.remove(found->second->fd());
    found->second->remove();
    forget(port);
}

/** The interface's descriptor is no longer watched. */
void Interfaces::forget(const PortName &port) {
    if (keeper_) {
        keeper_->drop(name_of(port));
    }
    interfaces_.erase(port);
}

void Interfaces::forget_gone() {
    std::vector<PortName> gone;
    for (const auto &[port, interface] : interfaces_) {
        if (interface->is_gone()) {
            gone.push_back(port);
        }
    }
    for (const PortName &port : gone) {
        loop_.remove(interfaces_.at(port)->fd());
        forget(port);
    }
}

void Interfaces::remove_leftovers(const std::set<PortName> &wanted) {
    if (std::exchange(has_looked_for_leftovers_, true)) {
        return;
    }
    const std::string kind = settings_.kind == InterfaceKind::kTap ? "tun" : "veth";
    for (const FoundLink &link : find_links()) {
        const auto port = marked_port_of(link);
        if (port && (!wanted.contains(*port) || link.kind != kind)) {
            KernelRequests{}.remove_link(link.index);  // the second end of a pair has gone with the first
        }
    }
    remove_kept(wanted);
}

/** Of the kept ones some may be in another namespace, where only their descriptor reaches them. */
void Interfaces::remove_kept(const std::set<PortName> &wanted) {
    for (auto entry = kept_.begin(); entry != kept_.end();) {
        const auto port = port_of_name(entry->first);
        if (port && wanted.contains(*port)) {
            ++entry;
            continue;
        }
        if (const auto unwanted = TapInterface::take_over(port.value_or(PortName{}), {}, std::move(entry->second))) {
            unwanted->remove();
        }
        keeper_->drop(entry->first);
        entry = kept_.erase(entry);
    }
}

void Interfaces::handle(const PortName &port, uint32_t events) {
    const auto found = interfaces_.find(port);
    if (found == interfaces_.end()) {
        return;
    }
    if ((events & (EPOLLERR | EPOLLHUP)) != 0 && found->second->is_gone()) {
        loop_.remove(found->second->fd());
        forget(port);
        return;
    }
    on_frames_(*found->second);
}

void Interfaces::remove_all() {
    set_wanted({});
    if (keeper_) {
        keeper_->end();
    }
}

void Interfaces::set_carrier(uint32_t intf, bool on) {
    carrier_[intf] = on;
    for (auto entry = interfaces_.lower_bound({intf, 0}); entry != interfaces_.end() && entry->first.intf == intf;
         ++entry) {
        entry->second->set_carrier(on);
    }
}

Interface *Interfaces::find(const PortName &port) {
    const auto found = interfaces_.find(port);
    return found == interfaces_.end() ? nullptr : found->second.get();
}

Interface *Interfaces::find(int index) {
    const auto found = std::find_if(interfaces_.begin(), interfaces_.end(),
                                    [index](const auto &entry) { return entry.second->index() == index; });
    return found == interfaces_.end() || index == 0 ? nullptr : found->second.get();
}

}  // namespace switchd
