// The kernel keeps what a TAP's owner says of its link, for those who ask.
#include "switchd/ports/link_mode.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "vdevice/sockets/unique_fd.h"

namespace switchd {

void show_link_mode(int index, uint32_t speed, bool is_full_duplex) {
    ethtool_cmd mode{};
    mode.cmd = ETHTOOL_SSET;
    mode.port = PORT_TP;
    mode.duplex = is_full_duplex ? DUPLEX_FULL : DUPLEX_HALF;
    ethtool_cmd_speed_set(&mode, speed);
    ifreq request{};
    request.ifr_data = reinterpret_cast<char *>(&mode);
    const vdevice::UniqueFd socket{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    if (if_indextoname(static_cast<unsigned>(index), request.ifr_name) != nullptr) {
        ioctl(socket.get(), SIOCETHTOOL, &request);
    }
}

}  // namespace switchd
