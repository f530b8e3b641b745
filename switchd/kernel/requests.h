// Changes that the daemon asks the kernel for: addresses that the switch has learned, and settings of interfaces.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "switchd/kernel/kernel_state.h"
#include "switchd/kernel/message.h"
#include "switchd/kernel/netlink_socket.h"

namespace switchd {

/** Settings of an interface; what is not given stays. */
struct LinkSettings {
    std::optional<bool> up = {};
    std::optional<bool> carrier = {}; /**< of a TUN or TAP device; others refuse it with EOPNOTSUPP, a veth too */
    std::optional<uint32_t> mtu = {};
    std::optional<Mac> mac = {};
    std::optional<std::string> name = {};
    std::optional<std::string> alias = {}; /**< an empty one takes it away */
};

/** An address that the switch has learned, or forgotten, at the interface of a port that is in a bridge. */
struct AddressChange {
    int interface = 0;
    uint16_t vid = 0; /**< 0 where the bridge is not aware of VLANs */
    Mac mac{};
    bool learned = true; /**< false: it is to be removed */
};

/** Waits for the kernel's answer to each request. A request gives 0, or why it was refused, as errno has it. */
class KernelRequests {
  public:
    /** Throws a vdevice::io::Error if there is no such socket. */
    KernelRequests();

    /** One request for all settings. The kernel makes them one by one: a refusal can leave some of them made. */
    int set_link(int interface, const LinkSettings &settings);
    int remove_link(int interface);
    /** A pair of interfaces, both down. */
    int make_veth_pair(const std::string &name, const std::string &peer);

    struct Refusal {
        size_t index = 0; /**< of the address */
        int error = 0;
    };
    /**
     * Adds the addresses to the forwarding databases as extern_learn, or removes them; the refused ones are returned.
     * That one to be removed is not there is no refusal.
     */
    std::vector<Refusal> change_addresses(std::span<const AddressChange> addresses);

  private:
    void begin(uint16_t type, uint16_t flags) { writer_.begin(type, flags, ++sequence_); }
    /** Sends the message that was written, and waits for its acknowledgement. */
    int exchange();
    /** The result for each. */
    std::vector<int> change_some(std::span<const AddressChange> addresses);
    /** Hands on the sequence number and result of each answer, to that of the last message; false if it does not come.
     */
    template <typename OnAnswer>
    bool await_answers(const OnAnswer &on_answer);

    netlink::Socket socket_;
    netlink::MessageWriter writer_;
    uint32_t sequence_ = 0;
};

}  // namespace switchd
