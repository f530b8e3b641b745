// VLANs by IPv4 subnet: which VLAN untagged packets of a port belong to, by their source address. Of the subnets that
// an address is in, the smallest decides.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <vector>

#include "vdevice/chip/frame/chip_ports.h"
#include "vdevice/chip/frame/tag_change.h"

namespace vdevice::chip {

struct Subnet {
    int64_t port = 0;
    uint32_t address = 0;
    uint32_t mask = 0; /**< the network's bits, from the first one on */
    TagChange change;

    bool has_key_of(const Subnet &other) const {
        return port == other.port && address == other.address && mask == other.mask;
    }
};

class SubnetTable {
  public:
    static constexpr size_t kCapacity = 256;

    explicit SubnetTable(const ChipPorts &ports) : ports_{ports} {}

    /** An address with bits outside the mask is refused: no packet would match. */
    Status add(const Subnet &subnet);
    /** The change does not matter. */
    Status remove(const Subnet &subnet);
    void clear() { subnets_.clear(); }

    /** What becomes of a packet, given from its type on; null if no subnet of the port holds its source. */
    const TagChange *find(int port, Bytes payload) const;
    /** The subnets, the smallest first. */
    const std::vector<Subnet> &list() const { return subnets_; }

  private:
    Status check_key(const Subnet &subnet) const;

    ChipPorts ports_;
    std::vector<Subnet> subnets_;
};

}  // namespace vdevice::chip
