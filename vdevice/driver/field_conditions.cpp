// The conditions of field rules: one call for each field.
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Field;
using chip::FieldWords;
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

class FieldConditions : public FieldConditionsCalls {
  public:
    explicit FieldConditions(chip::Switch &chip) : chip_{chip} {}

    Status user_field_qualify_clear(uint32_t entry) override { return table().clear_qualifiers(entry); }

    Status user_field_qualify_SrcIp6(uint32_t entry, const uint8_t *data, const uint8_t *mask) override {
        return table().qualify(entry, {Field::kSourceIpv6, ipv6_words(data), ipv6_words(mask)});
    }

    Status user_field_qualify_DstIp6(uint32_t entry, const uint8_t *data, const uint8_t *mask) override {
        return table().qualify(entry, {Field::kDestinationIpv6, ipv6_words(data), ipv6_words(mask)});
    }

    Status user_field_qualify_SrcMac(uint32_t entry, const uint8_t *data, const uint8_t *mask) override {
        return table().qualify(entry, {Field::kSourceMac, mac_words(data), mac_words(mask)});
    }

    Status user_field_qualify_DstMac(uint32_t entry, const uint8_t *data, const uint8_t *mask) override {
        return table().qualify(entry, {Field::kDestinationMac, mac_words(data), mac_words(mask)});
    }

    Status user_field_qualify_SrcIp(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kSourceIpv4, data, mask);
    }

    Status user_field_qualify_DstIp(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kDestinationIpv4, data, mask);
    }

    Status user_field_qualify_InPorts(uint32_t entry, const adp_port_set_t &data, const adp_port_set_t &mask) override {
        return table().qualify(entry, {Field::kInPorts, port_words(data), port_words(mask)});
    }

    Status user_field_qualify_OuterVlanId(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kOuterVid, data, mask);
    }

    Status user_field_qualify_OuterVlanPri(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kOuterPriority, data, mask);
    }

    Status user_field_qualify_InnerVlan(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kInnerFormat, data, mask);
    }

    Status user_field_qualify_InnerVlanId(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kInnerVid, data, mask);
    }

    Status user_field_qualify_InnerVlanPri(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kInnerPriority, data, mask);
    }

    Status user_field_qualify_L4SrcPort(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kSourcePort, data, mask);
    }

    Status user_field_qualify_L4DstPort(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kDestinationPort, data, mask);
    }

    Status user_field_qualify_EtherType(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kEtherType, data, mask);
    }

    Status user_field_qualify_IpProtocol(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kProtocol, data, mask);
    }

    Status user_field_qualify_DSCP(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kDscp, data, mask);
    }

    Status user_field_qualify_Ip6TrafficClass(uint32_t entry, uint32_t data, uint32_t mask) override {
        return qualify(entry, Field::kTrafficClass, data, mask);
    }

    Status user_field_qualify_iptype(uint32_t entry, uint32_t data) override {
        return qualify_kind(entry, Field::kIpKind, chip::is_ip_kind(data), data);
    }

    Status user_field_qualify_FrameType(uint32_t entry, uint32_t data) override {
        return qualify_kind(entry, Field::kFrameKind, chip::is_frame_kind(data), data);
    }

  private:
    Status qualify(uint32_t entry, Field field, uint32_t data, uint32_t mask) {
        return table().qualify(entry, chip::qualifier(field, data, mask));
    }

    Status qualify_kind(uint32_t entry, Field field, bool exists, uint32_t kind) {
        return exists ? qualify(entry, field, chip::bit_of(kind), chip::bit_of(kind)) : Status::kBadArgument;
    }

    chip::FieldTable &table() { return chip_.fields().table(); }

    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<FieldConditionsCalls> field_conditions(chip::Switch &chip) {
    return std::make_unique<FieldConditions>(chip);
}

}  // namespace vdevice::driver
