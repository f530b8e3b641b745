// Dumps and notifications. A dump is read while notifications wait; afterwards they are applied to what it gave. That
// makes nothing wrong: an object's last notification says all of it, and what was changed before the dump has none that
// waits.
#include "switchd/kernel/monitor.h"

#include <linux/if_bridge.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "vdevice/io/error.h"

namespace switchd {
namespace {

using netlink::MessageWriter;
using Received = netlink::Socket::Received;

/** Handled in one turn of the daemon's loop. */
constexpr int kNotificationsAtOnce = 512;
/** Bounds for a kernel that never ends: of notifications until none waits, and of a dump. */
constexpr int kMostNotifications = 1 << 18;
constexpr int kMostDatagrams = 1 << 16;
constexpr int kTries = 4;
constexpr int kAnswersOctets = 256 * 1024;

template <typename Header>
void write_dump(MessageWriter &writer, uint16_t type, uint32_t sequence, const Header &header) {
    writer.clear();
    writer.begin(type, NLM_F_REQUEST | NLM_F_DUMP, sequence);
    writer.add(header);
}

ifinfomsg links_of(uint8_t family) {
    ifinfomsg info{};
    info.ifi_family = family;
    return info;
}

}  // namespace

KernelMonitor::KernelMonitor(int buffer_octets)
    : notifications_{buffer_octets, {RTNLGRP_LINK, RTNLGRP_NEIGH, RTNLGRP_MDB}}, requests_{kAnswersOctets} {
    resync();
}

void KernelMonitor::write_request(Table table) {
    ++sequence_;
    switch (table) {
        case Table::kLinks:
        case Table::kBridges:
            write_dump(writer_, RTM_GETLINK, sequence_, links_of(AF_UNSPEC));
            writer_.put_number(IFLA_EXT_MASK, uint32_t{RTEXT_FILTER_SKIP_STATS});
            break;
        case Table::kBridgeLinks:
            write_dump(writer_, RTM_GETLINK, sequence_, links_of(AF_BRIDGE));
            writer_.put_number(IFLA_EXT_MASK, uint32_t{RTEXT_FILTER_BRVLAN_COMPRESSED});
            break;
        case Table::kAddresses: {
            ndmsg header{};
            header.ndm_family = AF_BRIDGE;
            write_dump(writer_, RTM_GETNEIGH, sequence_, header);
            break;
        }
        case Table::kGroups: {
            br_port_msg header{};
            header.family = AF_BRIDGE;
            write_dump(writer_, RTM_GETMDB, sequence_, header);
            break;
        }
    }
    if (table == Table::kBridges) {
        const MessageWriter::Nested info{writer_, IFLA_LINKINFO};
        writer_.put_text(IFLA_INFO_KIND, "bridge");
    }
}

int KernelMonitor::dump_once(Table table, Reader &reader, bool &interrupted) {
    write_request(table);
    if (const int error = requests_.send(writer_.octets()); error != 0) {
        return error;
    }
    for (int count = 0; count < kMostDatagrams; ++count) {
        if (const Received received = requests_.receive(); received != Received::kDatagram) {
            return received == Received::kLoss ? ENOBUFS : ETIMEDOUT;
        }
        netlink::Octets rest = requests_.datagram();
        while (const auto message = netlink::take_message(rest)) {
            if (message->header.nlmsg_seq != sequence_) {
                continue;  // of a dump that was given up
            }
            interrupted = interrupted || (message->header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
            if (message->header.nlmsg_type == NLMSG_DONE || message->header.nlmsg_type == NLMSG_ERROR) {
                return netlink::error_of(*message);
            }
            reader.apply(*message);
        }
    }
    return ETIMEDOUT;
}

int KernelMonitor::dump(Table table, Reader &reader) {
    int error = 0;
    bool interrupted = true;
    for (int tries = 0; tries < kTries && interrupted && error == 0; ++tries) {
        interrupted = false;
        error = dump_once(table, reader, interrupted);
    }
    // A kernel without bridges, or without their groups, has none.
    return error == EOPNOTSUPP ? 0 : error;
}

/** Until none waits; without a reader they are discarded. False if some were lost. */
bool KernelMonitor::read_notifications(Reader *reader) {
    bool lost = false;
    for (int count = 0; count < kMostNotifications; ++count) {
        const Received received = notifications_.receive();
        if (received == Received::kNothing) {
            return !lost;
        }
        if (received == Received::kLoss) {
            ++counters_.losses;
            lost = true;
        } else if (reader != nullptr) {
            reader->apply(notifications_.datagram());
        }
    }
    return false;
}

int KernelMonitor::read_all(Reader &fresh) {
    // After a loss the kernel goes on dropping until the last one was read, and says so only once.
    read_notifications(nullptr);
    int error = 0;
    for (const Table table : {Table::kLinks, Table::kBridgeLinks, Table::kAddresses, Table::kGroups}) {
        error = error != 0 ? error : dump(table, fresh);
    }
    return error;
}

bool KernelMonitor::try_resync() {
    ++counters_.resyncs;
    requests_ = netlink::Socket{kAnswersOctets};  // a dump that was given up would keep the kernel from another one
    const KernelState before = state();
    for (int tries = 0; tries < kTries && due_; ++tries) {
        Reader fresh;
        if (const int error = read_all(fresh); error != 0) {
            errno = error;
            throw vdevice::io::error_from_errno("read the kernel's interfaces and bridges");
        }
        // The kernel counts through its tables: what was removed during the dump made it leave out another one.
        const bool is_whole = read_notifications(&fresh) && fresh.removals() == 0 && !fresh.is_stale();
        due_ = !is_whole;
        counters_.messages += reader_.messages();
        counters_.ignored += reader_.ignored();
        reader_ = std::move(fresh);
    }
    return state() != before;
}

bool KernelMonitor::resync() {
    due_ = true;
    return try_resync();
}

bool KernelMonitor::receive() {
    bool changed = false;
    for (int count = 0; count < kNotificationsAtOnce && !due_; ++count) {
        const Received received = notifications_.receive();
        if (received == Received::kNothing) {
            break;
        }
        if (received == Received::kLoss) {
            ++counters_.losses;
            due_ = true;
        } else {
            changed = reader_.apply(notifications_.datagram()) || changed;
            due_ = reader_.is_stale();
        }
    }
    return resync_if_due() || changed;
}

bool KernelMonitor::refresh_bridges() {
    if (!is_complete() && reader_.has_room()) {
        due_ = true;
    }
    if (due_) {
        return resync_if_due();
    }
    const auto is_bridge = [](const auto &entry) { return entry.second.bridge.has_value(); };
    if (std::none_of(state().links.begin(), state().links.end(), is_bridge)) {
        return false;
    }
    Reader bridges;
    due_ = dump(Table::kBridges, bridges) != 0;
    return reader_.refresh_bridges(bridges.state());
}

bool KernelMonitor::resync_if_due() {
    try {
        return due_ && try_resync();
    } catch (const vdevice::io::Error &) {
        return false;  // it stays due
    }
}

KernelMonitor::Counters KernelMonitor::counters() const {
    Counters counters = counters_;
    counters.messages += reader_.messages();
    counters.ignored += reader_.ignored();
    return counters;
}

}  // namespace switchd
