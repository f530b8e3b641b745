// A socket to the kernel's network configuration (rtnetlink).
#pragma once

#include <stdint.h>

#include <initializer_list>
#include <vector>

#include "switchd/kernel/message.h"
#include "vdevice/sockets/unique_fd.h"

namespace switchd::netlink {

class Socket {
  public:
    enum class Received {
        kDatagram, /**< datagram() has it */
        kNothing,  /**< none waits, or none came in time */
        kLoss      /**< the kernel had no room for some, or one was cut */
    };

    /**
     * One that waits for its answers, a second at most; or, with groups (RTNLGRP_...), one that gets their
     * notifications and waits for nothing. Throws a vdevice::io::Error.
     */
    explicit Socket(int buffer_octets, std::initializer_list<int> groups = {});

    int fd() const { return fd_.get(); }
    /** 0, or errno. */
    int send(Octets octets);
    Received receive();
    Octets datagram() const { return datagram_; }

  private:
    vdevice::UniqueFd fd_;
    std::vector<uint8_t> buffer_;
    Octets datagram_;
};

/** What a message says that ends an answer (NLMSG_DONE, NLMSG_ERROR): 0, or errno. */
int error_of(const Message &message);

}  // namespace switchd::netlink
