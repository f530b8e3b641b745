// Chooses between making an interface and adopting one.
#include "switchd/ports/interface.h"

#include <adp/types.h>

#include <utility>

#include "switchd/kernel/requests.h"
#include "switchd/ports/interface_marks.h"
#include "switchd/ports/tap_interface.h"
#include "switchd/ports/veth_interface.h"

namespace switchd {
namespace {

std::unique_ptr<Interface> make_tap(const PortName &port, const InterfaceSettings &settings,
                                    const std::vector<FoundLink> &links, vdevice::UniqueFd kept) {
    if (kept) {
        if (auto interface = TapInterface::take_over(port, links, std::move(kept))) {
            return interface;
        }
    }
    if (const FoundLink *own = find_marked(links, mark_of(port))) {
        return TapInterface::adopt(port, *own);
    }
    check_is_free(links, name_of(port));
    return TapInterface::make(port, settings);
}

std::unique_ptr<Interface> make_veth(const PortName &port, const InterfaceSettings &settings,
                                     const std::vector<FoundLink> &links) {
    // The far end is found first: the near one may be in another namespace.
    if (const FoundLink *far = find_marked(links, far_mark_of(port))) {
        return VethInterface::adopt(port, *far);
    }
    return VethInterface::make(port, settings, links);
}

}  // namespace

InterfaceKind best_interface_kind() {
    return TapInterface::is_possible() ? InterfaceKind::kTap : InterfaceKind::kVeth;
}

Mac mac_of(const PortName &port, const Mac &base) {
    const bool is_group = port.intf >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG;
    const uint32_t number = (port.intf & ADP_INTF_INDEX_MASK) + (is_group ? ADP_USER_PORTS : 0);
    const vdevice::chip::Mac sum{vdevice::chip::Mac::from_bytes(base.data()).value() + number};
    Mac mac{};
    for (size_t i = 0; i < mac.size(); ++i) {
        mac[i] = sum.byte(i);
    }
    return mac;
}

std::unique_ptr<Interface> make_interface(const PortName &port, const InterfaceSettings &settings,
                                          const std::vector<FoundLink> &links, vdevice::UniqueFd kept) {
    return settings.kind == InterfaceKind::kTap ? make_tap(port, settings, links, std::move(kept))
                                                : make_veth(port, settings, links);
}

void Interface::remove() {
    // By its index a TAP goes at once, whoever else has its descriptor.
    if (index_ == 0 || KernelRequests{}.remove_link(index_) != 0) {
        destroy();
    }
}

}  // namespace switchd
