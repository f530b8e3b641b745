// 802.1X: which ports are closed, and who is let in.
#pragma once

#include <stdint.h>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "switchd/daemon/dot1x_control.h"
#include "switchd/daemon/dot1x_file.h"
#include "switchd/kernel/kernel_state.h"

namespace switchd {

/**
 * A closed port drops all frames in hardware but those to reserved addresses, which EAPOL has, and those from stations
 * that were let in, who have static entries in the switch's address table. Who decides is somebody else, mostly
 * hostapd.
 *
 * Failures are told as sentences. What failed counts as not done, so it can be asked for again.
 */
class Dot1x {
  public:
    using Sentences = std::vector<std::string>;

    static constexpr size_t kMaxStations = 64; /**< of a port */

    /** The file tells the next daemon what is controlled and who was let in, in case this one is killed; "" for none.
     */
    explicit Dot1x(std::string file);

    /**
     * Before the first configure(), if the switch goes on as a killed daemon left it: whom that one had let in stays
     * in. Otherwise nobody is let in at the start.
     */
    void adopt();
    /**
     * The ports under control, by interface number. One that comes under control is closed, one that leaves it opened.
     * Tries again what has failed.
     */
    Sentences configure(const std::map<uint32_t, Dot1xControl> &ports);
    /**
     * The VLAN of the port's untagged frames, in which its stations have their entries; 0 for none. A VLAN that was
     * removed and made again is told as 0 in between: entries go with their VLAN.
     */
    Sentences set_vlan(uint32_t intf, uint16_t vid);
    /** Who was let in on the port is so no longer: another one may be plugged in next. */
    Sentences link_went_down(uint32_t intf);

    /** Lets a station in, or opens the port. Throws a vdevice::io::Error if that is refused. */
    std::string authorize(uint32_t intf, const std::optional<Mac> &station);
    /** The same backwards; without a station for everybody on the port. */
    std::string unauthorize(uint32_t intf, const std::optional<Mac> &station);

    /** The port's learning mode is what closes it, and not to be changed by others. */
    bool is_closed(uint32_t intf) const;
    /** Who is let in on the port: of a closed one, the switch's own stack may see frames from these, and EAPOL. */
    std::set<Mac> stations(uint32_t intf) const;
    /** Whether the static entry is one of these, and not to be removed by others. */
    bool is_entry(uint16_t vid, const Mac &station) const;
    /** null for a port that is not under control; otherwise {"control", "open", "stations"}. */
    nlohmann::json status(uint32_t intf) const;

  private:
    struct Port {
        Dot1xControl control = Dot1xControl::kNone;
        std::optional<bool> is_open; /**< the hardware, where it is known */
        Dot1xRecord who;             /**< is let in */

        bool has_anybody() const { return who.by_hand || !who.stations.empty(); }
        bool is_to_be_open() const { return control == Dot1xControl::kPort && has_anybody(); }
    };

    Port &controlled(uint32_t intf);
    uint16_t vid_of(uint32_t intf) const;
    void release(const std::map<uint32_t, Dot1xControl> &ports, Sentences &failures);
    void forget_all(uint32_t intf, Port &port);
    void let_in(uint32_t intf, Port &port, const Mac &station);
    void save() const;

    std::string file_;
    std::map<uint32_t, Port> ports_;    /**< under control */
    std::map<uint32_t, uint16_t> vids_; /**< of all ports */
    Dot1xRecords adopted_;              /**< as the killed daemon left them */
};

}  // namespace switchd
