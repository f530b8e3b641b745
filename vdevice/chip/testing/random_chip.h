// For tests: a chip that is set in every way, at random, and frames for it. Few VLANs, ports and stations, so that what
// is set meets what comes in.
#pragma once

#include <random>
#include <vector>

#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/packet_builder.h"
#include "vdevice/chip/testing/recording_sink.h"

namespace vdevice::chip::test {

/** A frame that comes in on a port. */
struct Arrival {
    int port;
    Octets frame;
};

class RandomChip {
  public:
    explicit RandomChip(unsigned seed);

    Switch &chip() { return chip_; }
    RecordingSink &sink() { return sink_; }
    Time now() const { return now_; }

    /** Changes one setting. The chip may refuse it. */
    void change();
    /** Time goes on, and a frame comes in. */
    void receive();
    /** So many frames, and changes between them. */
    void live(int frames);
    Arrival arrival();

  private:
    int pick(int from, int to) { return std::uniform_int_distribution<int>{from, to}(random_); }
    bool is_one_in(int count) { return pick(1, count) == 1; }
    uint32_t number(int from, int to) { return static_cast<uint32_t>(pick(from, to)); }
    int port() { return pick(0, 7); }
    uint32_t vid() { return number(1, 3); }
    PortSet ports();
    Mac mac();
    TagChange tag_change();
    template <typename Change>
    void change_port(Change change);
    Octets cpu_tag();

    void change_link();
    void change_port_rules();
    void change_port_tags();
    void change_port_limits();
    void change_vlan();
    void change_addresses();
    void change_groups();
    void change_learning();
    void change_trunk();
    void change_spanning_tree();
    void change_tags();
    void change_traps();
    void change_rule();
    void change_mirrors();
    void change_priorities();
    void change_queues();

    std::mt19937 random_;
    RecordingSink sink_;
    Switch chip_{sink_};
    Time now_{};
};

}  // namespace vdevice::chip::test
