// Walks over messages and attributes, and lays them out.
#include "switchd/kernel/message.h"

namespace switchd::netlink {

std::optional<Message> take_message(Octets &octets) {
    Octets rest = octets;
    const auto header = take<nlmsghdr>(rest);
    if (!header || header->nlmsg_len < sizeof(nlmsghdr) || header->nlmsg_len > octets.size()) {
        return std::nullopt;
    }
    const Message message{*header, octets.first(header->nlmsg_len).subspan(sizeof(nlmsghdr))};
    octets = behind(octets, header->nlmsg_len);
    return message;
}

std::optional<Attribute> take_attribute(Octets &octets) {
    Octets rest = octets;
    const auto header = take<nlattr>(rest);
    if (!header || header->nla_len < sizeof(nlattr) || header->nla_len > octets.size()) {
        return std::nullopt;
    }
    constexpr uint16_t kTypeMask = 0x3FFF;  // NLA_TYPE_MASK is a signed number
    const Attribute attribute{static_cast<uint16_t>(header->nla_type & kTypeMask),
                              octets.first(header->nla_len).subspan(sizeof(nlattr))};
    octets = behind(octets, header->nla_len);
    return attribute;
}

Octets Attributes::payload(uint16_t type) const {
    Octets rest = octets_;
    while (const auto attribute = take_attribute(rest)) {
        if (attribute->type == type) {
            return attribute->payload;
        }
    }
    return {};
}

bool Attributes::has(uint16_t type) const {
    bool found = false;
    each(type, [&found](Octets) { found = true; });
    return found;
}

std::string Attributes::text(uint16_t type) const {
    const Octets octets = payload(type);
    return {octets.begin(), std::find(octets.begin(), octets.end(), uint8_t{0})};
}

MessageWriter::Nested::Nested(MessageWriter &writer, uint16_t type) : writer_{writer}, place_{writer.octets_.size()} {
    writer.put_header(type, 0);
}

MessageWriter::Nested::~Nested() {
    const auto length = static_cast<uint16_t>(writer_.octets_.size() - place_);
    std::memcpy(writer_.octets_.data() + place_ + offsetof(nlattr, nla_len), &length, sizeof(length));
}

void MessageWriter::begin(uint16_t type, uint16_t flags, uint32_t sequence) {
    message_ = octets_.size();
    nlmsghdr header{};
    header.nlmsg_type = type;
    header.nlmsg_flags = flags;
    header.nlmsg_seq = sequence;
    add(header);
}

void MessageWriter::put(uint16_t type, Octets payload) {
    put_header(type, payload.size());
    append(payload.data(), payload.size());
}

void MessageWriter::put_text(uint16_t type, std::string_view text) {
    const std::string with_null{text};
    put_header(type, with_null.size() + 1);
    append(with_null.c_str(), with_null.size() + 1);
}

void MessageWriter::put_header(uint16_t type, size_t size) {
    add(nlattr{static_cast<uint16_t>(sizeof(nlattr) + size), type});
}

void MessageWriter::append(const void *data, size_t size) {
    const auto *octets = static_cast<const uint8_t *>(data);
    octets_.insert(octets_.end(), octets, octets + size);
    octets_.resize(aligned(octets_.size()));
    const auto length = static_cast<uint32_t>(octets_.size() - message_);
    std::memcpy(octets_.data() + message_ + offsetof(nlmsghdr, nlmsg_len), &length, sizeof(length));
}

}  // namespace switchd::netlink
