// Pairs are made and removed by 'ip'; settings are ioctl calls and a file under /proc.
#include "vdevice/io/interfaces.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstring>
#include <fstream>
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

bool interface_exists(const std::string &name) {
    return if_nametoindex(name.c_str()) != 0;
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

void remove_pairs(const std::vector<CablePair> &pairs) {
    std::string commands;
    for (const CablePair &pair : pairs) {
        if (interface_exists(pair.device_side)) {
            commands += "link del " + pair.device_side + "\n";
        }
    }
    // A namespace of a host may end at the same time and take its pair along: a missing pair is no error.
    feed("ip -force -batch - 2>/dev/null", commands);
}

void create_pairs(const std::vector<CablePair> &pairs) {
    std::string commands;
    const std::string mtu = " mtu " + std::to_string(kMtu);
    for (const CablePair &pair : pairs) {
        for (const std::string &name : {pair.device_side, pair.peer_side}) {
            if (interface_exists(name)) {
                throw Error{"cannot create interface " + name + ": there is one of that name already. Use a network " +
                            "namespace of the device's own ('unshare -Urn'), or leave out --create-interfaces."};
            }
        }
        commands.append("link add ").append(pair.device_side).append(mtu);
        commands.append(" type veth peer name ").append(pair.peer_side).append(mtu).append("\n");
    }
    // Only what 'ip' prints says why the kernel refused, so it goes to the terminal.
    if (!feed("ip -batch -", commands)) {
        remove_pairs(pairs);
        throw Error{
            "cannot create the interfaces: the 'ip' command failed. Run it as root or inside 'unshare -Urn', "
            "with iproute2 installed."};
    }
}

}  // namespace

Cables::Cables(std::vector<CablePair> pairs) : pairs_{std::move(pairs)} {
    create_pairs(pairs_);
}

Cables::~Cables() {
    remove_pairs(pairs_);
}

void make_transparent(const std::string &name) {
    const UniqueFd fd = control_socket();
    ifreq request = request_for(name);
    request.ifr_mtu = kMtu;
    if (ioctl(fd.get(), SIOCSIFMTU, &request) != 0) {
        throw error_from_errno("set the MTU of " + name);
    }
    for (const int offload : {ETHTOOL_STXCSUM, ETHTOOL_SRXCSUM, ETHTOOL_STSO, ETHTOOL_SGSO, ETHTOOL_SGRO}) {
        set_offload(fd.get(), name, offload);
    }
    // A kernel without IPv6 has no such file, and nothing to switch off.
    std::ofstream{"/proc/sys/net/ipv6/conf/" + name + "/disable_ipv6"} << "1";
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
