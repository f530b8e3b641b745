// For tests: messages as the kernel composes them.
#pragma once

#include <endian.h>
#include <linux/if_bridge.h>
#include <linux/if_ether.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "switchd/kernel/kernel_state.h"
#include "switchd/kernel/message.h"

namespace switchd::test {

using Bytes = std::vector<uint8_t>;
using netlink::MessageWriter;
using Nested = MessageWriter::Nested;
/** Adds attributes. */
using Put = std::function<void(MessageWriter &)>;

inline Bytes operator+(Bytes first, const Bytes &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

template <typename Header>
Bytes message(uint16_t type, const Header &header, const Put &put = {}) {
    MessageWriter writer;
    writer.begin(type, 0, 0);
    writer.add(header);
    if (put) {
        put(writer);
    }
    return {writer.octets().begin(), writer.octets().end()};
}

inline void put_nested(MessageWriter &writer, uint16_t type, const Put &put) {
    const Nested nested{writer, type};
    if (put) {
        put(writer);
    }
}
/** With a setting of an octet. */
inline Put octet(uint16_t type, uint8_t number) {
    return [=](MessageWriter &writer) { writer.put_number(type, number); };
}

inline ifinfomsg link_info(int index, unsigned flags = 0, uint8_t family = AF_UNSPEC) {
    ifinfomsg info{};
    info.ifi_family = family;
    info.ifi_index = index;
    info.ifi_flags = flags;
    return info;
}

inline Bytes link(int index, const std::string &name, const Put &put = {}, unsigned flags = IFF_UP) {
    return message(RTM_NEWLINK, link_info(index, flags), [&](MessageWriter &writer) {
        writer.put_text(IFLA_IFNAME, name);
        if (put) {
            put(writer);
        }
    });
}
inline Bytes link_gone(int index) {
    return message(RTM_DELLINK, link_info(index));
}
inline Bytes bridge(int index, const std::string &name, const Put &data = {}) {
    return link(index, name, [&](MessageWriter &writer) {
        const Nested info{writer, IFLA_LINKINFO};
        writer.put_text(IFLA_INFO_KIND, "bridge");
        put_nested(writer, IFLA_INFO_DATA, data);
    });
}
/** An interface in a bridge, in a message of its own and not of the bridge's family. */
inline Bytes port(int index, const std::string &name, int bridge, const Put &data = octet(IFLA_BRPORT_STATE, 3)) {
    return link(index, name, [&](MessageWriter &writer) {
        writer.put_number(IFLA_MASTER, bridge);
        const Nested info{writer, IFLA_LINKINFO};
        writer.put_text(IFLA_INFO_KIND, "tun");
        writer.put_text(IFLA_INFO_SLAVE_KIND, "bridge");
        put_nested(writer, IFLA_INFO_SLAVE_DATA, data);
    });
}
/** What the bridge reports of a port, or of itself. */
inline Bytes member(int index, int bridge, const Put &settings, const Put &vlans = {}) {
    return message(RTM_NEWLINK, link_info(index, 0, AF_BRIDGE), [&](MessageWriter &writer) {
        writer.put_number(IFLA_MASTER, bridge);
        if (settings) {
            put_nested(writer, IFLA_PROTINFO | NLA_F_NESTED, settings);
        }
        if (vlans) {
            put_nested(writer, IFLA_AF_SPEC, vlans);
        }
    });
}
inline Bytes member_gone(int index, int bridge) {
    return message(RTM_DELLINK, link_info(index, 0, AF_BRIDGE),
                   [=](MessageWriter &writer) { writer.put_number(IFLA_MASTER, bridge); });
}
inline Put vlan(uint16_t vid, uint16_t flags = 0) {
    return [=](MessageWriter &writer) {
        const Nested info{writer, IFLA_BRIDGE_VLAN_INFO};
        writer.add(bridge_vlan_info{flags, vid});
    };
}

struct Neighbour {
    int interface = 0;
    int bridge = 0;
    Mac mac{};
    uint16_t state = NUD_REACHABLE;
    uint8_t flags = 0;
    uint16_t vid = 0;
};

inline Bytes address(const Neighbour &neighbour, uint16_t type = RTM_NEWNEIGH) {
    ndmsg header{};
    header.ndm_family = AF_BRIDGE;
    header.ndm_ifindex = neighbour.interface;
    header.ndm_state = neighbour.state;
    header.ndm_flags = neighbour.flags;
    return message(type, header, [&](MessageWriter &writer) {
        writer.put(NDA_LLADDR, neighbour.mac);
        writer.put_number(NDA_MASTER, neighbour.bridge);
        if (neighbour.vid != 0) {
            writer.put_number(NDA_VLAN, neighbour.vid);
        }
    });
}

struct Group {
    GroupKey key; /**< its bridge, too */
    int interface = 0;
    uint8_t flags = 0;
    Bytes source{};
};

inline void put_group(MessageWriter &writer, const Group &group) {
    br_mdb_entry entry{};
    entry.ifindex = static_cast<uint32_t>(group.interface);
    entry.flags = group.flags;
    entry.vid = group.key.vid;
    std::memcpy(&entry.addr.u, group.key.address.data(), sizeof(entry.addr.u));
    entry.addr.proto = htobe16(group.key.protocol);
    const Nested info{writer, MDBA_MDB_ENTRY_INFO};
    writer.add(entry);
    if (!group.source.empty()) {
        writer.put(MDBA_MDB_EATTR_SOURCE, group.source);
    }
}
inline br_port_msg bridge_header(int bridge) {
    br_port_msg header{};
    header.family = AF_BRIDGE;
    header.ifindex = static_cast<uint32_t>(bridge);
    return header;
}
inline Bytes group(const Group &group, uint16_t type = RTM_NEWMDB) {
    return message(type, bridge_header(group.key.bridge), [&](MessageWriter &writer) {
        const Nested groups{writer, MDBA_MDB};
        const Nested entry{writer, MDBA_MDB_ENTRY};
        put_group(writer, group);
    });
}
inline Bytes router_port(int bridge, int interface, uint16_t type = RTM_NEWMDB) {
    return message(type, bridge_header(bridge), [=](MessageWriter &writer) {
        const Nested ports{writer, MDBA_ROUTER};
        const Nested port{writer, MDBA_ROUTER_PORT};
        writer.add(interface);
        writer.put_number(MDBA_ROUTER_PATTR_TYPE, uint8_t{MDB_RTR_TYPE_TEMP_QUERY});
    });
}

inline GroupKey ipv4_group(int bridge, uint8_t last, uint16_t vid = 0) {
    return {bridge, vid, ETH_P_IP, {239, 1, 2, last}};
}

}  // namespace switchd::test
