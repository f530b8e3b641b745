// The conditions of field rules: one call for each field.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Field;
using chip::FieldWords;
using chip::Qualifier;
using chip::Status;

FieldWords mac_words(const uint8_t *bytes) {
    constexpr unsigned kWordBits = 32;
    const uint64_t value = chip::Mac::from_bytes(bytes).value();
    return {static_cast<uint32_t>(value >> kWordBits), static_cast<uint32_t>(value)};
}

FieldWords ipv6_words(const uint8_t *bytes) {
    constexpr size_t kIpv6Bytes = 16;
    const chip::Bytes address{bytes, kIpv6Bytes};
    FieldWords words{};
    for (size_t offset = 0; offset < kIpv6Bytes; offset += sizeof(uint32_t)) {
        words[offset / sizeof(uint32_t)] = chip::read32(address, offset);
    }
    return words;
}

FieldWords port_words(const adp_port_set_t &ports) {
    FieldWords words{};
    chip::PortSet::from_words(ports.word).to_words(words.data());
    return words;
}

}  // namespace

int32_t Driver::qualify(int32_t handle, uint32_t unit, uint32_t entry, const Qualifier &qualifier) {
    return on_fields(handle, unit, [&] { return fields().qualify(entry, qualifier); });
}

int32_t Driver::qualify_bytes(int32_t handle, uint32_t unit, uint32_t entry, Field field, FieldReader read,
                              const uint8_t *data, const uint8_t *mask) {
    if (data == nullptr || mask == nullptr) {
        return on_fields(handle, unit, [] { return Status::kBadArgument; });
    }
    return qualify(handle, unit, entry, {field, read(data), read(mask)});
}

int32_t Driver::qualify_kind(int32_t handle, uint32_t unit, uint32_t entry, Field field, bool exists, uint32_t kind) {
    if (!exists) {
        return on_fields(handle, unit, [] { return Status::kBadArgument; });
    }
    return qualify(handle, unit, entry, chip::qualifier(field, chip::bit_of(kind), chip::bit_of(kind)));
}

int32_t Driver::user_field_qualify_clear(int32_t handle, uint32_t unit, uint32_t entry) {
    return on_fields(handle, unit, [&] { return fields().clear_qualifiers(entry); });
}

int32_t Driver::user_field_qualify_SrcIp6(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                          const uint8_t *mask) {
    return qualify_bytes(handle, unit, entry, Field::kSourceIpv6, ipv6_words, data, mask);
}

int32_t Driver::user_field_qualify_DstIp6(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                          const uint8_t *mask) {
    return qualify_bytes(handle, unit, entry, Field::kDestinationIpv6, ipv6_words, data, mask);
}

int32_t Driver::user_field_qualify_SrcMac(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                          const uint8_t *mask) {
    return qualify_bytes(handle, unit, entry, Field::kSourceMac, mac_words, data, mask);
}

int32_t Driver::user_field_qualify_DstMac(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                          const uint8_t *mask) {
    return qualify_bytes(handle, unit, entry, Field::kDestinationMac, mac_words, data, mask);
}

int32_t Driver::user_field_qualify_SrcIp(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kSourceIpv4, data, mask));
}

int32_t Driver::user_field_qualify_DstIp(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kDestinationIpv4, data, mask));
}

int32_t Driver::user_field_qualify_InPorts(int32_t handle, uint32_t unit, uint32_t entry, adp_port_set_t data,
                                           adp_port_set_t mask) {
    return qualify(handle, unit, entry, {Field::kInPorts, port_words(data), port_words(mask)});
}

int32_t Driver::user_field_qualify_OuterVlanId(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                               uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kOuterVid, data, mask));
}

int32_t Driver::user_field_qualify_OuterVlanPri(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                                uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kOuterPriority, data, mask));
}

int32_t Driver::user_field_qualify_InnerVlan(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                             uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kInnerFormat, data, mask));
}

int32_t Driver::user_field_qualify_InnerVlanId(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                               uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kInnerVid, data, mask));
}

int32_t Driver::user_field_qualify_InnerVlanPri(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                                uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kInnerPriority, data, mask));
}

int32_t Driver::user_field_qualify_L4SrcPort(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                             uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kSourcePort, data, mask));
}

int32_t Driver::user_field_qualify_L4DstPort(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                             uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kDestinationPort, data, mask));
}

int32_t Driver::user_field_qualify_EtherType(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                             uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kEtherType, data, mask));
}

int32_t Driver::user_field_qualify_IpProtocol(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                              uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kProtocol, data, mask));
}

int32_t Driver::user_field_qualify_DSCP(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data, uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kDscp, data, mask));
}

int32_t Driver::user_field_qualify_Ip6TrafficClass(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                                   uint32_t mask) {
    return qualify(handle, unit, entry, chip::qualifier(Field::kTrafficClass, data, mask));
}

int32_t Driver::user_field_qualify_iptype(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data) {
    return qualify_kind(handle, unit, entry, Field::kIpKind, chip::is_ip_kind(data), data);
}

int32_t Driver::user_field_qualify_FrameType(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data) {
    return qualify_kind(handle, unit, entry, Field::kFrameKind, chip::is_frame_kind(data), data);
}

}  // namespace vdevice::driver
