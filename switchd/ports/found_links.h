// The interfaces of this namespace, with what our own are known by.
#pragma once

#include <string>
#include <vector>

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

/** Throws an io::Error. */
std::vector<FoundLink> find_links();

}  // namespace switchd
