// The names of the reasons to drop.
#include "vdevice/chip/tables/port.h"

namespace vdevice::chip {

const char *name(Drop reason) {
    static constexpr std::array<const char *, kDropReasons> kNames = {"port_down",
                                                                      "runt",
                                                                      "oversize",
                                                                      "vlan_missing",
                                                                      "not_member",
                                                                      "same_port",
                                                                      "egress_not_member",
                                                                      "egress_down",
                                                                      "no_destination",
                                                                      "no_switch_tag",
                                                                      "bad_opcode",
                                                                      "directed_to_cpu",
                                                                      "directed_to_unknown",
                                                                      "unknown_source",
                                                                      "isolated",
                                                                      "rule",
                                                                      "meter",
                                                                      "loopback",
                                                                      "filtered",
                                                                      "learn_limit",
                                                                      "unknown_group",
                                                                      "dos_same_mac",
                                                                      "dos_land",
                                                                      "dos_null_scan",
                                                                      "dos_syn_fin",
                                                                      "dos_xmas_scan",
                                                                      "dos_fragment",
                                                                      "stp_blocked",
                                                                      "stp_egress",
                                                                      "policed",
                                                                      "storm"};
    return kNames[static_cast<size_t>(reason)];
}

}  // namespace vdevice::chip
