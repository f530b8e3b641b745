// The network interfaces of the switch: those that are wanted, and no others.
#pragma once

#include <stdint.h>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "switchd/ports/interface.h"
#include "switchd/ports/keeper.h"
#include "switchd/ports/port_name.h"
#include "vdevice/io/event_loop.h"
#include "vdevice/sockets/unique_fd.h"

namespace switchd {

/** The object's end leaves all interfaces to the next daemon; remove_all() is a clean end. */
class Interfaces {
  public:
    using Handler = std::function<void(Interface &)>;

    /**
     * Throws an io::Error if the keeper cannot be had.
     *
     * @param keeper_path  the keeper's socket, in the run folder; empty for none. Pairs need none
     * @param on_frames    called by the loop when frames wait in an interface
     */
    Interfaces(vdevice::io::EventLoop &loop, InterfaceSettings settings, const std::string &keeper_path,
               Handler on_frames);
    ~Interfaces();
    Interfaces(const Interfaces &) = delete;
    Interfaces &operator=(const Interfaces &) = delete;

    /**
     * Adopts or makes what is missing and removes the others; the first time also what a predecessor left. Makes anew
     * what somebody has removed. Gives a sentence for each one that cannot be had; the others are there.
     */
    std::vector<std::string> set_wanted(const std::set<PortName> &wanted);
    /** Removes all, and ends the keeper. */
    void remove_all();
    /** Of a port's or a group's interface and of all with its tags, also of those that are made later. */
    void set_carrier(uint32_t intf, bool on);

    /** Null if there is none. */
    Interface *find(const PortName &port);
    Interface *find(int index);
    const std::map<PortName, std::unique_ptr<Interface>> &all() const { return interfaces_; }

    ReadRoom &room() { return room_; }

  private:
    void make(const PortName &port, const std::vector<FoundLink> &links);
    void remove(const PortName &port);
    void forget(const PortName &port);
    void forget_gone();
    void remove_leftovers(const std::set<PortName> &wanted);
    void remove_kept(const std::set<PortName> &wanted);
    void handle(const PortName &port, uint32_t events);

    vdevice::io::EventLoop &loop_;
    InterfaceSettings settings_;
    Handler on_frames_;
    std::optional<Keeper> keeper_;
    std::map<std::string, vdevice::UniqueFd> kept_; /**< the predecessor's descriptors that are not adopted yet */
    bool has_looked_for_leftovers_ = false;
    std::map<PortName, std::unique_ptr<Interface>> interfaces_;
    std::map<uint32_t, bool> carrier_; /**< as far as it was set */
    ReadRoom room_;
};

}  // namespace switchd
