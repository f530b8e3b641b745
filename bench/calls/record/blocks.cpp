// Blocks of memory as C buffers.
#include "bench/calls/record/blocks.h"

#include <algorithm>
#include <cstring>

namespace record {
namespace {

std::string address_in(const std::string &name, size_t offset) {
    return "(void *)(" + name + ".bytes + " + std::to_string(offset) + ")";
}

}  // namespace

std::string initialiser(std::span<const uint8_t> bytes) {
    std::string text = "{";
    for (const uint8_t byte : bytes) {
        text += std::to_string(byte) + ",";
    }
    return text + "}";
}

std::string literal(const char *text) {
    std::string quoted = "\"";
    for (; *text != '\0'; ++text) {
        quoted += *text == '"' || *text == '\\' ? "\\" : "";
        quoted += *text == '\n' ? "\\n" : std::string(1, *text);
    }
    return quoted + "\"";
}

std::string Blocks::add(std::span<const uint8_t> bytes) {
    const std::string name = prefix_ + "_" + std::to_string(blocks_.size());
    blocks_.push_back({name, reinterpret_cast<uintptr_t>(bytes.data()), {bytes.begin(), bytes.end()}});
    return address_in(name, 0);
}

std::optional<std::string> Blocks::find(uintptr_t address) const {
    // Of blocks that stood in the same place one after the other the last one is meant.
    const auto leads_into = [address](const Block &block) {
        return address >= block.begin && address < block.begin + block.bytes.size();
    };
    const auto found = std::find_if(blocks_.rbegin(), blocks_.rend(), leads_into);
    return found == blocks_.rend() ? std::nullopt : std::optional(address_in(found->name, address - found->begin));
}

std::string Blocks::definitions() const {
    std::string text;
    for (const Block &block : blocks_) {
        const std::string size = std::to_string(std::max<size_t>(block.bytes.size(), 1));
        text += "static BUFFER(" + size + ") " + block.name + ";\n";
        text +=
            "static const unsigned char " + block.name + "_image[" + size + "] = " + initialiser(block.bytes) + ";\n";
    }
    return text;
}

std::string Blocks::preparation() const {
    std::string text;
    for (const Block &block : blocks_) {
        text += "    memcpy(" + block.name + ".bytes, " + block.name + "_image, sizeof " + block.name + "_image);\n";
        for (size_t at = 0; at + sizeof(uintptr_t) <= block.bytes.size(); at += sizeof(uintptr_t)) {
            uintptr_t word = 0;
            std::memcpy(&word, &block.bytes[at], sizeof word);
            if (const auto address = find(word); address) {
                text += "    *(void **)" + address_in(block.name, at) + " = " + *address + ";\n";
            }
        }
    }
    return text;
}

}  // namespace record
