// Sends frames on a network interface as fast as the kernel takes them.
#pragma once

#include <sys/socket.h>

#include <stdint.h>
#include <span>
#include <string>
#include <vector>

#include "bench/device/flows.h"
#include "vdevice/sockets/unique_fd.h"

namespace bench {

class PacketSender {
  public:
    /** What it sends: frames as they are, or trains of them. */
    enum class Kind { kFrames, kTrains };

    /** Throws a std::system_error if there is no such interface or no privilege. */
    PacketSender(const std::string &interface_name, Kind kind);

    /** Sends frames, or trains, many with one system call; gives the number that the interface has taken. */
    uint64_t send(std::span<const Frame> frames);

  private:
    vdevice::UniqueFd socket_;
    std::vector<iovec> pieces_;
    std::vector<mmsghdr> messages_;
};

}  // namespace bench
