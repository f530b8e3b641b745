// The first steps of a frame's way: it is taken in, read, and given its VLAN and priority. A step that ends the way is
// false.
#pragma once

#include <stdint.h>
#include <vector>

#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/chip/pipeline/egress.h"
#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/chip/pipeline/tables.h"

namespace vdevice::chip {

class Ingress {
  public:
    Ingress(Tables &tables, Egress &egress) : tables_{tables}, egress_{egress} {}

    /** The port is up and takes a frame of this length and at this rate; mirrors get their copies. */
    bool accept(Passage &p);
    /** From the CPU: what is directed to ports goes there, and only the rest is switched. */
    bool unwrap(Passage &p);
    /** The header is whole, and no attack. */
    bool read(Passage &p);
    /** VLAN and priority, by tags, port and DSCP and then by rules, which may also end the way. */
    bool classify(Passage &p);

  private:
    Classified class_of(int port, const Header &header) const;
    void send_directed(Passage &p, const TransmitTag &tag);
    void send_directed_to(Passage &p, int port);

    Tables &tables_;
    Egress &egress_;
    std::vector<uint8_t> remarked_; /**< the payload of the frame on its way, if its DSCP is another one */
};

}  // namespace vdevice::chip
