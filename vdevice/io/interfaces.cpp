// Pairs are made and removed by 'ip'; settings are ioctl calls and a file under /proc.
#include "vdevice/io/interfaces.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice::io {
namespace {

UniqueFd control_socket() {
    UniqueFd fd{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    if (!fd) {
        throw error_from_errno("open a socket for interface settings");
    }
    return fd;
}

ifreq request_for(const std::string &name) {
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    return request;
}

/** Feeds the commands to @p program, a fixed shell command line: no input of a user gets into it. */
bool feed(const char *program, const std::string &commands) {
    FILE *pipe = popen(program, "we");
    if (pipe == nullptr) {
        return false;
    }
    const bool written = std::fwrite(commands.data(), 1, commands.size(), pipe) == commands.size();
    return pclose(pipe) == 0 && written;
}

void set_offload(int fd, const std::string &name, int command) {
    ethtool_value off{};
    off.cmd = static_cast<uint32_t>(command);
    off.data = 0;
    ifreq request = request_for(name);
    request.ifr_data = reinterpret_cast<char *>(&off);
    // Not every kind of interface has every offload; a failure is no harm.
    ioctl(fd, SIOCETHTOOL, &request);
}

/** A setting that cannot be made, as where /proc/sys is read-only, stays. */
void set_protocol(const char *protocol, const std::string &name, const char *setting, const char *value) {
    std::ofstream{std::string{"/proc/sys/net/"} + protocol + "/conf/" + name + "/" + setting} << value;
}

/** The marked interfaces and their peers: "port1@host1", or "port1@if7" if the peer is in another namespace. */
std::map<std::string, std::string> marked_pairs(uint32_t mark) {
    std::map<std::string, std::string> pairs;
    const std::string command = "exec ip -br link show group " + std::to_string(mark);
    const std::unique_ptr<FILE, int (*)(FILE *)> pipe{popen(command.c_str(), "re"), pclose};
    std::array<char, 1024> line;
    while (pipe != nullptr && std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
        const std::string name{line.data(), std::strcspn(line.data(), " ")};
        const size_t at = name.find('@');
        pairs[name.substr(0, at)] = at == std::string::npos ? "" : name.substr(at + 1);
    }
    return pairs;
}

void remove_marked(uint32_t mark) {
    // A namespace of a host may have ended and taken the last pair along: that is no error.
    feed(("exec ip link del group " + std::to_string(mark) + " 2>/dev/null").c_str(), "");
}

void remove_all_but(const std::vector<CablePair> &pairs, const std::map<std::string, std::string> &found) {
    std::string commands;
    for (const auto &pair : found) {
        const std::string &name = pair.first;
        const bool is_wanted = std::any_of(pairs.begin(), pairs.end(),
                                           [&](const CablePair &wanted) { return wanted.device_side == name; });
        commands += is_wanted ? "" : "link del " + name + "\n";
    }
    feed("exec ip -force -batch - 2>/dev/null", commands);
}

void check_is_free(const std::string &name) {
    if (if_nametoindex(name.c_str()) != 0) {
        throw Error{"cannot create interface " + name + ": there is one of that name already. Use a network " +
                    "namespace of the device's own ('unshare -Urn'), or leave out --create-interfaces."};
    }
}

void create_pairs(const std::vector<CablePair> &pairs, uint32_t mark) {
    std::string commands;
    const std::string mtu = " mtu " + std::to_string(kMtu);
    for (const CablePair &pair : pairs) {
        check_is_free(pair.device_side);
        check_is_free(pair.peer_side);
        commands.append("link add ")
            .append(pair.device_side)
            .append(mtu)
            .append(" group ")
            .append(std::to_string(mark));
        commands.append(" type veth peer name ").append(pair.peer_side).append(mtu).append("\n");
    }
    // Only what 'ip' prints says why the kernel refused, so it goes to the terminal.
    if (!feed("exec ip -batch -", commands)) {
        remove_marked(mark);
        throw Error{
            "cannot create the interfaces: the 'ip' command failed. Run it as root or inside 'unshare -Urn', "
            "with iproute2 installed."};
    }
}

}  // namespace

Cables::Cables(const std::vector<CablePair> &pairs, uint32_t mark) : pairs_{marked_pairs(mark)}, mark_{mark} {
    remove_all_but(pairs, pairs_);
    std::vector<CablePair> missing;
    std::copy_if(pairs.begin(), pairs.end(), std::back_inserter(missing),
                 [this](const CablePair &pair) { return !pairs_.contains(pair.device_side); });
    create_pairs(missing, mark_);
    for (const CablePair &pair : missing) {
        pairs_[pair.device_side] = pair.peer_side;
    }
}

Cables::~Cables() {
    if (mark_ != 0) {
        remove_marked(mark_);
    }
}

bool Cables::has_peer(const CablePair &pair) const {
    const auto found = pairs_.find(pair.device_side);
    return found != pairs_.end() && found->second == pair.peer_side;
}

void make_transparent(const std::string &name) {
    const UniqueFd fd = control_socket();
    ifreq request = request_for(name);
    request.ifr_mtu = kMtu;
    if (ioctl(fd.get(), SIOCSIFMTU, &request) != 0) {
        throw error_from_errno("set the MTU of " + name);
    }
    turn_off_offloads(name);
    // A kernel without IPv6 has no such file, and nothing to switch off.
    set_protocol("ipv6", name, "disable_ipv6", "1");
}

void keep_from_machine(const std::string &name) {
    set_protocol("ipv4", name, "arp_ignore", "8");
    set_protocol("ipv4", name, "forwarding", "0");
}

void turn_off_offloads(const std::string &name) {
    const UniqueFd fd = control_socket();
    for (const int offload : {ETHTOOL_STXCSUM, ETHTOOL_SRXCSUM, ETHTOOL_STSO, ETHTOOL_SGSO, ETHTOOL_SGRO}) {
        set_offload(fd.get(), name, offload);
    }
}

void set_interface_up(const std::string &name, bool up) {
    const UniqueFd fd = control_socket();
    ifreq request = request_for(name);
    if (ioctl(fd.get(), SIOCGIFFLAGS, &request) != 0) {
        throw error_from_errno("find interface " + name);
    }
    const int flags = up ? request.ifr_flags | IFF_UP : request.ifr_flags & ~IFF_UP;
    request.ifr_flags = static_cast<short>(flags);
    if (ioctl(fd.get(), SIOCSIFFLAGS, &request) != 0) {
        throw error_from_errno(std::string{up ? "raise" : "lower"} + " interface " + name);
    }
}

}  // namespace vdevice::io
