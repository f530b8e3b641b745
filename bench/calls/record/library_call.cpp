// Arguments of a library call as C.
#include "bench/calls/record/library_call.h"

#include <vector>

#include "tests/support/call_line.h"

namespace record {

LibraryCall::LibraryCall(const std::string &line, Blocks &blocks)
    : command_(call_line::parsed(line)),
      call_(call_line::require_call(command_.name)),
      arguments_(call_, command_, variables_) {
    std::vector<std::string> buffers;
    for (const adpsh::Bytes &block : arguments_.blocks()) {
        blocks.add(block);
    }
    for (const adpsh::Slot &slot : arguments_.slots()) {
        const bool is_buffer = !slot.is_null && (slot.parameter->direction != calls::Direction::kValue ||
                                                 slot.parameter->element.kind == calls::Kind::kStruct);
        buffers.push_back(is_buffer ? blocks.add(slot.storage) : "");
    }
    text_ = std::string(call_.name) + "(";
    for (size_t index = 0; index < buffers.size(); ++index) {
        text_ += (index == 0 ? "" : ", ") + argument(arguments_.slots()[index], buffers[index], blocks);
    }
    text_ += ")";
}

std::string LibraryCall::argument(const adpsh::Slot &slot, const std::string &buffer, const Blocks &blocks) const {
    const calls::Element &type = slot.parameter->element;
    if (slot.is_null || type.kind == calls::Kind::kCallback) {
        return "0";
    }
    if (slot.parameter->direction != calls::Direction::kValue) {
        return buffer;
    }
    if (type.kind == calls::Kind::kStruct) {
        return "*(const " + std::string(type.layout->name) + " *)" + buffer;
    }
    const int64_t number = calls::load(type.kind, slot.storage.data());
    if (type.kind == calls::Kind::kWord) {
        if (const auto address = blocks.find(static_cast<uintptr_t>(number)); address) {
            return "(uintptr_t)" + *address;
        }
    }
    return std::to_string(number) + (type.kind == calls::Kind::kU64 ? "ULL" : "LL");
}

}  // namespace record
