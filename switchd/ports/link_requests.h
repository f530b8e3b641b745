// What netlink is asked about interfaces here: which there are; to make a pair, to change one, to remove one.
#pragma once

#include <stdint.h>
#include <optional>
#include <string>
#include <vector>

#include "switchd/kernel/kernel_state.h"

namespace switchd {

struct FoundLink {
    int index = 0;
    std::string name;
    std::string alias;
    std::string kind; /**< of IFLA_INFO_KIND: "tun", "veth" ... */
    int peer = 0;     /**< the other end of a veth pair; 0 if that is in another namespace */
    bool up = false;
    bool carrier = false;
};

/** All of this namespace. Throws an io::Error. */
std::vector<FoundLink> find_links();

/** What is to be changed of an interface. */
struct LinkChanges {
    std::optional<Mac> mac;
    std::optional<uint32_t> mtu;
    std::optional<bool> up;
    std::string alias; /**< empty: unchanged */
};

/** 0, or why not, as errno has it. */
int change_link(int index, const LinkChanges &changes);
int make_veth_pair(const std::string &name, const std::string &peer_name);
int remove_link(int index);

}  // namespace switchd
