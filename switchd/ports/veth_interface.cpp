// Pairs: the near end is the switch's interface, the far end's state is the near end's carrier.
#include "switchd/ports/veth_interface.h"

#include <net/if.h>

#include <array>

#include "switchd/kernel/requests.h"
#include "switchd/ports/interface_marks.h"
#include "vdevice/io/error.h"
#include "vdevice/io/interfaces.h"

namespace switchd {
namespace {

constexpr size_t kWithoutRing = 0;

/** Longer than any port's name, and still a name: "adp.swp26.4094". */
std::string far_name_of(const PortName &port) {
    return "adp." + name_of(port);
}

std::string current_name_of(int index) {
    std::array<char, IF_NAMESIZE> name{};
    return if_indextoname(static_cast<unsigned>(index), name.data()) == nullptr ? "" : name.data();
}

int index_of(const std::string &name) {
    return static_cast<int>(if_nametoindex(name.c_str()));
}

/** The far end is no interface of this machine: the kernel sends nothing on it. The near one does all work itself. */
void prepare(const std::string &near_name, const std::string &far_name) {
    if (!near_name.empty()) {
        vdevice::io::turn_off_offloads(near_name);
    }
    vdevice::io::make_transparent(far_name);
}

void mark_pair(const PortName &port, const InterfaceSettings &settings, int near, int far) {
    const std::string action = "set up interface " + name_of(port);
    KernelRequests requests;
    check_done(requests.set_link(far, {.alias = far_mark_of(port)}), action);
    check_done(requests.set_link(near, first_settings_of(port, settings)), action);
}

}  // namespace

std::unique_ptr<Interface> VethInterface::make(const PortName &port, const InterfaceSettings &settings,
                                               const std::vector<FoundLink> &links) {
    const std::string name = name_of(port);
    const std::string far_name = far_name_of(port);
    check_is_free(links, name);
    check_is_free(links, far_name);
    check_done(KernelRequests{}.make_veth_pair(name, far_name), "make interface " + name);
    const int near = index_of(name);
    const int far = index_of(far_name);
    try {
        mark_pair(port, settings, near, far);
        prepare(name, far_name);
        return std::make_unique<VethInterface>(port, near, far, far_name);
    } catch (const vdevice::io::Error &) {
        KernelRequests{}.remove_link(near);
        throw;
    }
}

std::unique_ptr<Interface> VethInterface::adopt(const PortName &port, const FoundLink &far) {
    prepare(far.peer == 0 ? "" : current_name_of(far.peer), far.name);
    return std::make_unique<VethInterface>(port, far.peer, far.index, far.name);
}

VethInterface::VethInterface(const PortName &port, int index, int far_index, const std::string &far_name)
    : Interface{port, index}, far_index_{far_index}, far_{far_name, kWithoutRing} {
    far_.open();
}

bool VethInterface::is_gone() const {
    return current_name_of(far_index_).empty();
}

void VethInterface::set_carrier(bool on) {
    // If it fails the interface is gone, which its user learns in another way.
    KernelRequests{}.set_link(far_index_, {.up = on});
}

void VethInterface::read(ReadRoom &room, const Take &take) {
    if (!room.batch) {
        room.batch.emplace();
    }
    far_.receive(*room.batch, [&take](vdevice::chip::Bytes frame, vdevice::io::WallTime) { take(frame); });
}

bool VethInterface::write(const vdevice::chip::Frame &frame) {
    far_.queue(frame);
    return true;
}

void VethInterface::destroy() {
    far_.close();
    KernelRequests{}.remove_link(far_index_);
}

}  // namespace switchd
