// VLANs by IPv4 subnet: the VLAN of untagged packets of a port by their source address. The smallest subnet that
// contains the address decides.
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
    uint32_t mask = 0; /**< the leading bits, which make the network */
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
    /** Removes the entry with the same key, whatever its change. */
    Status remove(const Subnet &subnet);
    void clear() { subnets_.clear(); }

    /** The change for a packet, given from its type on; null if no subnet of the port contains its source. */
    const TagChange *find(int port, Bytes payload) const;
    /** The subnets, the smallest first. */
    const std::vector<Subnet> &list() const { return subnets_; }

  private:
    Status check_key(const Subnet &subnet) const;

    ChipPorts ports_;
    std::vector<Subnet> subnets_;
};

}  // namespace vdevice::chip
