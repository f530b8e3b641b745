// Which form each block has, and records that hold addresses.
#include "calls/form.h"

#include <adp/fp.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace calls {
namespace {

constexpr Element kHalfWord = {Kind::kU16, sizeof(uint16_t)};

Form words(const Element &octet, size_t count) {
    if (count % kWord32.size != 0) {
        return {Form::Kind::kOctets, &octet, count};
    }
    return {Form::Kind::kArray, &kWord32, count / kWord32.size};
}

bool is_address(int64_t qualifier) {
    return qualifier == ADP_FP_QUALIFY_SRC_IP6 || qualifier == ADP_FP_QUALIFY_DST_IP6 ||
           qualifier == ADP_FP_QUALIFY_SRC_MAC || qualifier == ADP_FP_QUALIFY_DST_MAC;
}

/** @p number is the one beside the octets. */
Form form_by_number(const Element &octet, size_t count, int64_t number) {
    bool are_octets = false;
    if (octet.octets == Octets::kCondition) {
        if (count == kHalfWord.size) {
            return {Form::Kind::kOne, &kHalfWord, 1};
        }
        are_octets = is_address(number);
    } else if (octet.octets == Octets::kRemark) {
        are_octets = number == ADP_REMARK_DST_MAC || number == ADP_REMARK_SRC_MAC;
    }
    return are_octets ? Form{Form::Kind::kOctets, &octet, count} : words(octet, count);
}

Form form_by_type(const Element &element, size_t count, bool is_one) {
    if (element.is_ports) {
        return {Form::Kind::kPorts, &element, count};
    }
    if (element.kind == Kind::kChar) {
        return {Form::Kind::kText, &element, count};
    }
    if (is_one) {
        return {Form::Kind::kOne, &element, 1};
    }
    const bool are_octets = element.kind == Kind::kU8 || element.kind == Kind::kOpaque;
    return {are_octets ? Form::Kind::kOctets : Form::Kind::kArray, &element, count};
}

const Field *field_named(const Struct &layout, std::string_view name) {
    const auto found = std::find_if(layout.fields.begin(), layout.fields.end(),
                                    [name](const Field &field) { return field.name == name; });
    return found == layout.fields.end() ? nullptr : &*found;
}

const void *at(const void *record, size_t offset) {
    return static_cast<const uint8_t *>(record) + offset;
}

}  // namespace

Form form_of(std::span<const Param> params, size_t index, const Blocks &blocks) {
    const Param &param = params[index];
    const size_t count = blocks[index].count;
    if (param.shape == Shape::kPortsWord) {
        static constexpr Element kPorts = {Kind::kU32, sizeof(uint32_t), true};
        return {Form::Kind::kPorts, &kPorts, kPortsWords};
    }
    if (param.element.octets == Octets::kPlain) {
        return form_by_type(param.element, count, param.counted_by == kNotCounted && param.extent == 1);
    }
    const Block &number = blocks[param.element.beside];
    return form_by_number(param.element, count, load(params[param.element.beside].element.kind, number.at));
}

Form form_of(const Struct &layout, const Field &field, const void *record) {
    if (field.element.octets == Octets::kPlain) {
        return form_by_type(field.element, field.count, field.count == 1);
    }
    const Field &number = layout.fields[field.element.beside];
    return form_by_number(field.element, field.count, load(number.element.kind, at(record, number.offset)));
}

bool is_frame(const Field &field) {
    return field.is_pointer && std::string_view(field.name) == "frame";
}

uint8_t *address_in(const Field &field, const void *record) {
    uint8_t *address = nullptr;
    std::memcpy(&address, at(record, field.offset), sizeof address);
    return address;
}

uint8_t *frame_of(const Struct &layout, const void *record) {
    return address_in(*field_named(layout, "frame"), record);
}

size_t frame_length(const Param &param, const void *record) {
    const Field &length = *field_named(*param.element.layout, "length");
    const auto octets = static_cast<size_t>(load(length.element.kind, at(record, length.offset)));
    // A call that receives a frame looks at the low 16 bits.
    return param.is_written() ? static_cast<uint16_t>(octets) : octets;
}

size_t frame_octets(const Param &param, const void *record) {
    const bool has_frame = frame_of(*param.element.layout, record) != nullptr;
    return has_frame ? std::min(frame_length(param, record), kMostElements) : 0;
}

Block octets_beside(std::span<const Param> params, const Blocks &blocks) {
    for (size_t index = 0; index < params.size(); ++index) {
        if (params[index].element.kind == Kind::kU8 && params[index].counted_by != kNotCounted) {
            return blocks[index];
        }
    }
    return {};
}

}  // namespace calls
