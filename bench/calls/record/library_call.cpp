#include "bench/calls/record/library_call.h"

#include <stdexcept>
#include <vector>

namespace record {
namespace {

adpsh::Command parsed(const std::string &line) {
    const auto command = adpsh::parse_line(line);
    if (const auto *error = std::get_if<adpsh::Error>(&command)) {
        throw std::runtime_error(line + ": " + error->text);
    }
    return std::get<adpsh::Command>(command);
}

const adpsh::Call &require_call(const std::string &name) {
    const adpsh::Call *call = adpsh::find_call(name);
    if (call == nullptr) {
        throw std::runtime_error("no exported function is called " + name);
    }
    return *call;
}

}  // namespace

LibraryCall::LibraryCall(const std::string &line, Blocks &blocks)
    : command_(parsed(line)), call_(require_call(command_.name)), arguments_(call_, command_, variables_) {
    std::vector<std::string> buffers;
    for (const adpsh::Bytes &room : arguments_.room()) {
        blocks.add(room);
    }
    for (const adpsh::Slot &slot : arguments_.slots()) {
        const bool is_buffer = !slot.is_null && (slot.parameter->direction != adpsh::Direction::kValue ||
                                                 slot.parameter->type.kind == adpsh::Kind::kRecord);
        buffers.push_back(is_buffer ? blocks.add(slot.storage) : "");
    }
    text_ = std::string(call_.name) + "(";
    for (std::size_t index = 0; index < buffers.size(); ++index) {
        text_ += (index == 0 ? "" : ", ") + argument(arguments_.slots()[index], buffers[index], blocks);
    }
    text_ += ")";
}

std::string LibraryCall::argument(const adpsh::Slot &slot, const std::string &buffer, const Blocks &blocks) const {
    const adpsh::Type &type = slot.parameter->type;
    if (slot.is_null || type.kind == adpsh::Kind::kCallback) {
        return "0";
    }
    if (slot.parameter->direction != adpsh::Direction::kValue) {
        return buffer;
    }
    if (type.kind == adpsh::Kind::kRecord) {
        return "*(const " + std::string(type.record->name) + " *)" + buffer;
    }
    const int64_t number = adpsh::load_number(type, slot.storage.data());
    if (type.kind == adpsh::Kind::kWord) {
        if (const auto address = blocks.find(static_cast<uintptr_t>(number)); address) {
            return "(uintptr_t)" + *address;
        }
    }
    return std::to_string(number) + (type.kind == adpsh::Kind::kU64 ? "ULL" : "LL");
}

}  // namespace record
