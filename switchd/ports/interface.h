// One network interface of the switch: what the kernel sends on it comes to the daemon, and the other way.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "switchd/kernel/kernel_state.h"
#include "switchd/ports/found_links.h"
#include "switchd/ports/port_name.h"
#include "vdevice/chip/frame/frame.h"
#include "vdevice/io/receive_batch.h"
#include "vdevice/sockets/unique_fd.h"

namespace switchd {

enum class InterfaceKind : uint8_t {
    kTap,
    kVeth, /**< one end of a pair, whose far end the daemon holds: where there are no TAP interfaces */
};

/** TAP, unless this system or this user cannot have one. */
InterfaceKind best_interface_kind();

struct InterfaceSettings {
    InterfaceKind kind = InterfaceKind::kTap;
    Mac base_mac{0x02, 0, 0, 0, 0, 0}; /**< of the switch */
    uint32_t mtu = 1500;
};

/** An address of the block that begins with the switch's: user ports first, then groups. Tags change nothing. */
Mac mac_of(const PortName &port, const Mac &base);

/** Room for frames that are read; all interfaces use it in turn. */
struct ReadRoom {
    /** Longer than the longest frame, so that a frame that is too long is seen to be one. */
    static constexpr size_t kFrameBytes = 9728;

    std::vector<uint8_t> frame = std::vector<uint8_t>(kFrameBytes);
    std::optional<vdevice::io::ReceiveBatch> batch; /**< of veth pairs */
};

/** The object's end leaves the interface as it is: the next daemon adopts it. */
class Interface {
  public:
    using Take = std::function<void(vdevice::chip::Bytes frame)>;

    virtual ~Interface() = default;
    Interface(const Interface &) = delete;
    Interface &operator=(const Interface &) = delete;

    const PortName &port() const { return port_; }
    /** It stays the same when the interface is renamed; 0 if it was moved to another namespace before it was adopted.
     */
    int index() const { return index_; }
    /** Readable when frames wait. */
    virtual int fd() const = 0;
    /** Somebody removed it. */
    virtual bool is_gone() const = 0;

    virtual void set_carrier(bool on) = 0;
    /** Hands over waiting frames, and at most so many that the other interfaces have their turn. */
    virtual void read(ReadRoom &room, const Take &take) = 0;
    /** The kernel receives the frame; false if it does not take it. Some frames wait for flush(). */
    virtual bool write(const vdevice::chip::Frame &frame) = 0;
    virtual void flush() {}
    /** A descriptor that is to stay open when the daemon is killed; -1 for none. */
    virtual int kept_fd() const { return -1; }
    /** Removes it from the kernel. */
    void remove();

  protected:
    Interface(const PortName &port, int index) : port_{port}, index_{index} {}

    virtual void destroy() = 0;

  private:
    PortName port_;
    int index_;
};

/**
 * Adopts a predecessor's interface, which is known by its mark whatever its name is now, or makes a new one without
 * carrier. An adopted one keeps its address, MTU and carrier. Throws an io::Error if it cannot be had, above all if
 * there is an interface of its name without the mark.
 *
 * @param links  all interfaces of the namespace
 * @param kept   the predecessor's descriptor, if it was kept
 */
std::unique_ptr<Interface> make_interface(const PortName &port, const InterfaceSettings &settings,
                                          const std::vector<FoundLink> &links, vdevice::UniqueFd kept);

}  // namespace switchd
