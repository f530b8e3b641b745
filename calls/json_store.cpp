// Writes JSON to the memory of a call under way.
#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "calls/form.h"
#include "calls/json_memory.h"
#include "calls/json_read.h"

namespace calls {
namespace {

using Json = nlohmann::json;

/** What is written once everything has been read. */
struct Write {
    void *to;
    std::vector<uint8_t> octets;
};

void *writable(const void *at) {
    return const_cast<void *>(at);
}

void read_frame_record(const Param &param, const Json &value, const void *record, std::vector<Write> &writes) {
    const Struct &layout = *param.element.layout;
    uint8_t *frame = frame_of(layout, record);
    Write &write = writes.emplace_back(Write{writable(record), std::vector<uint8_t>(layout.size)});
    read_struct(value, layout, write.octets.data());
    read_offsets(value, layout, write.octets.data(), frame);
    const Json *octets = find_member(value, "frame");
    if (octets != nullptr && !octets->is_null()) {
        Write &content = writes.emplace_back(Write{frame, std::vector<uint8_t>(frame_octets(param, record))});
        read_octets(*octets, content.octets.data(), content.octets.size());
    }
}

void read_argument(std::span<const Param> params, const Blocks &blocks, size_t index, const Json &value,
                   std::vector<Write> &writes) {
    const Param &param = params[index];
    const Block &block = blocks[index];
    if (block.at == nullptr) {
        if (!value.is_null()) {
            throw BadValue("has a value, and its address is null");
        }
        return;
    }
    if (param.shape == Shape::kFrameRecord) {
        return read_frame_record(param, value, block.at, writes);
    }
    Write &write =
        writes.emplace_back(Write{writable(block.at), std::vector<uint8_t>(block.count * param.element.size)});
    if (param.shape == Shape::kOutPointer) {
        const Block octets = octets_beside(params, blocks);
        const uint8_t *address = read_offset(value, octets.at, octets.count);
        write.octets.resize(sizeof address);
        std::memcpy(write.octets.data(), &address, sizeof address);
    } else {
        read_block(value, form_of(params, index, blocks), write.octets.data());
    }
}

}  // namespace

void store(std::span<const Param> params, const Blocks &blocks, const Json &values) {
    check_arguments(values);
    std::vector<Write> writes;
    for (size_t index = 0; index < params.size(); ++index) {
        if (params[index].is_written()) {
            naming(params[index], [&] {
                if (const Json *value = find_member(values, params[index].name)) {
                    read_argument(params, blocks, index, *value, writes);
                }
            });
        }
    }
    for (const Write &write : writes) {
        std::copy(write.octets.begin(), write.octets.end(), static_cast<uint8_t *>(write.to));
    }
}

}  // namespace calls
