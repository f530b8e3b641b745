// The fields of one frame, as the field processor compares them with its rules.
#pragma once

#include <array>

#include "vdevice/chip/field.h"
#include "vdevice/chip/frame.h"
#include "vdevice/chip/ip_packet.h"

namespace vdevice::chip {

/** A frame as it comes to the field processor. */
struct FieldFrame {
    int ingress;
    std::size_t octets; /**< its length on the wire, without the check sequence */
    const Header &header;
    std::uint16_t tci; /**< VLAN and priority in which it is being switched */
};

class FieldKey {
  public:
    explicit FieldKey(const FieldFrame &frame);

    bool meets(const Qualifier &qualifier) const;

  private:
    void set(Field field, std::uint32_t value);
    void set(Field field, Mac mac);
    void set_ipv6(Field field, Bytes address);
    /** @p octets is the packet as a whole. */
    void set_packet(const IpPacket &packet, Bytes octets);
    FieldWords &add(Field field);
    const FieldWords &at(Field field) const { return words_[static_cast<std::size_t>(field)]; }
    bool has(Field field) const { return (present_ & bit_of(field)) != 0; }
    bool is_equal(const Qualifier &qualifier) const;
    bool shares_port(const Qualifier &qualifier) const;

    static_assert(kFields <= 32, "present_ has a bit for each");
    std::uint32_t present_ = 0;
    std::array<FieldWords, kFields> words_{};
};

}  // namespace vdevice::chip
