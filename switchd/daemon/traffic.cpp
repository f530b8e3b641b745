// Events of the CPU port and the interfaces.
#include "switchd/daemon/traffic.h"

#include <net/if.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "vdevice/io/error.h"
#include "vdevice/sockets/unique_fd.h"

namespace switchd {
namespace {

HashKey random_key() {
    HashKey key{};
    if (getrandom(key.data(), sizeof key, 0) != static_cast<ssize_t>(sizeof key)) {
        throw vdevice::io::error_from_errno("get random octets");
    }
    return key;
}

InterfaceSettings settings_of(const Configuration &configuration, const Mac &base_mac) {
    InterfaceSettings settings;
    settings.kind = configuration.interfaces_kind ? *configuration.interfaces_kind : best_interface_kind();
    settings.base_mac = base_mac;
    return settings;
}

PathLimits limits_of(const Configuration &configuration) {
    PathLimits limits;
    limits.flooded = configuration.flood_limit;
    return limits;
}

}  // namespace

Mac base_mac_of(const Configuration &configuration) {
    if (configuration.mac) {
        return *configuration.mac;
    }
    const vdevice::UniqueFd socket{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    ifreq request{};
    configuration.cpu_interface.copy(request.ifr_name, sizeof request.ifr_name - 1);
    if (ioctl(socket.get(), SIOCGIFHWADDR, &request) != 0) {
        throw vdevice::io::error_from_errno("read the address of " + configuration.cpu_interface);
    }
    Mac mac{};
    std::copy_n(request.ifr_hwaddr.sa_data, mac.size(), mac.begin());
    return mac;
}

Time now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

Traffic::Traffic(vdevice::io::EventLoop &loop, const Configuration &configuration, const Mac &base_mac,
                 const std::string &keeper_path, Relay::LacpHandler on_lacp)
    : loop_{loop},
      cpu_port_{configuration.cpu_interface},
      path_{random_key(), limits_of(configuration), now()},
      interfaces_{loop, settings_of(configuration, base_mac), keeper_path,
                  [this](Interface &interface) { relay_.from_interface(interface, now()); }},
      relay_{path_, cpu_port_, interfaces_, std::move(on_lacp)} {
    reopen();
}

Traffic::~Traffic() {
    if (watched_ >= 0) {
        loop_.remove(watched_);
    }
}

void Traffic::configure(const Configuration &configuration) {
    path_.set_limits(limits_of(configuration), now());
}

void Traffic::reopen() {
    if (watched_ >= 0 && cpu_port_.is_current()) {
        return;
    }
    if (watched_ >= 0) {
        loop_.remove(std::exchange(watched_, -1));
    }
    cpu_port_.open();
    watched_ = cpu_port_.fd();
    loop_.add(watched_, EPOLLIN, [this](uint32_t) { relay_.from_chip(now()); });
}

}  // namespace switchd
