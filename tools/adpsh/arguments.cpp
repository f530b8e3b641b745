#include "tools/adpsh/arguments.h"

#include "tools/adpsh/refusal.h"
#include "tools/adpsh/suggest.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace adpsh {

namespace {

std::string about(const Parameter &parameter, const std::string &text) {
    return std::string("'") + parameter.name + "': " + text;
}

bool is_bitmap(const Parameter &parameter) {
    constexpr size_t kPairOfWords = 2;
    constexpr size_t kPortSetWords = 8;
    return parameter.type.kind == Kind::kU32 && parameter.counter == kNoCounter &&
           (parameter.count == kPairOfWords || parameter.count == kPortSetWords);
}

}  // namespace

Arguments::Arguments(const Call &call, const Command &command, const Variables &variables)
    : call_(call), variables_(variables), slots_(call.parameters.size()) {
    for (size_t i = 0; i < slots_.size(); ++i) {
        slots_[i].parameter = &call.parameters[i];
    }
    const std::vector<const Value *> values = assign(command);
    for (size_t i = 0; i < slots_.size(); ++i) {
        if (values[i] != nullptr) {
            try {
                fill(i, *values[i]);
            } catch (const Refusal &refusal) {
                throw Refusal(about(call.parameters[i], refusal.what()));
            }
        }
    }
    infer_counts(values);
    for (Slot &slot : slots_) {
        make_room(slot);
    }
}

void Arguments::fill_outputs(uint8_t byte) {
    for (Slot &slot : slots_) {
        if (slot.parameter->direction == Direction::kOut) {
            std::fill(slot.storage.begin(), slot.storage.end(), byte);
        }
    }
}

Result Arguments::invoke() {
    std::vector<void *> addresses;
    for (Slot &slot : slots_) {
        addresses.push_back(slot.is_null ? nullptr : slot.storage.data());
    }
    return call_.invoke(addresses.data());
}

size_t Arguments::parameter_named(const std::string &name) const {
    std::vector<std::string_view> names;
    for (size_t i = 0; i < slots_.size(); ++i) {
        if (name == call_.parameters[i].name) {
            return i;
        }
        names.emplace_back(call_.parameters[i].name);
    }
    throw Refusal(std::string(call_.name) + " has no argument '" + name + "'" + did_you_mean(name, names));
}

/** Which value each parameter gets, null for none. Outputs are only given by name: what they hold before the call. */
std::vector<const Value *> Arguments::assign(const Command &command) const {
    std::vector<const Value *> values(slots_.size());
    std::vector<const Value *> positional;
    for (const Argument &argument : command.arguments) {
        if (argument.name.empty()) {
            positional.push_back(&argument.value);
            continue;
        }
        const Value *&value = values[parameter_named(argument.name)];
        if (value != nullptr) {
            throw Refusal("'" + argument.name + "' is given twice");
        }
        value = &argument.value;
    }
    const std::vector<size_t> open = positions(positional.size(), values);
    for (size_t i = 0; i < open.size(); ++i) {
        values[open[i]] = positional[i];
    }
    return values;
}

/** The inputs that the unnamed arguments stand for: all that are open, with or without the inferable counts. */
std::vector<size_t> Arguments::positions(size_t given, const std::vector<const Value *> &named) const {
    std::vector<size_t> all;
    std::vector<size_t> needed;
    for (size_t i = 0; i < slots_.size(); ++i) {
        if (named[i] == nullptr && is_input(call_.parameters[i])) {
            all.push_back(i);
            if (!is_inferable_count(call_, i)) {
                needed.push_back(i);
            }
        }
    }
    if (given == all.size()) {
        return all;
    }
    if (given == needed.size()) {
        return needed;
    }
    throw Refusal(std::string(given < needed.size() ? "too few"
                              : given > all.size()  ? "too many"
                                                    : "unclear") +
                  " arguments; usage: " + usage(call_));
}

void Arguments::fill(size_t index, const Value &value) {
    Slot &slot = slots_[index];
    const Parameter &parameter = *slot.parameter;
    if (parameter.shape == Shape::kOutPointer) {
        throw Refusal("the call sets this address");
    }
    if (parameter.direction == Direction::kValue) {
        return fill_value(slot, value);
    }
    if (is_null(value)) {
        if (!is_input(parameter)) {
            throw Refusal("an output needs an address");
        }
        slot.is_null = true;
    } else if (parameter.shape == Shape::kList) {
        fill_list(slot, value);
    } else if (parameter.shape == Shape::kFrameRecord) {
        fill_frame_record(slot, value);
    } else {
        fill_array(slot, value);
    }
}

void Arguments::fill_value(Slot &slot, const Value &value) {
    const Type &type = slot.parameter->type;
    slot.elements = 1;
    slot.storage.resize(type.size);
    if (type.kind == Kind::kCallback) {
        if (value.form != Value::Form::kWord || (value.text != "print" && value.text != "none" && !is_null(value))) {
            throw Refusal("a callback is 'print' or 'none', not " + written(value));
        }
        void (*const function)() = value.text == "print" ? type.callback->print : nullptr;
        static_assert(sizeof function == sizeof(void *));
        std::memcpy(slot.storage.data(), &function, sizeof function);
        return;
    }
    const size_t rooms = room_.size();
    Context context{variables_, room_};
    store_element(type, value, slot.storage.data(), context);
    if (type.kind == Kind::kWord && room_.size() > rooms) {
        slot.pointed = &room_.back();
        slot.before = room_.back();
    }
}

void Arguments::fill_array(Slot &slot, const Value &value) {
    const Parameter &parameter = *slot.parameter;
    Context context{variables_, room_};
    if (parameter.type.kind == Kind::kText) {
        if (value.form != Value::Form::kWord && value.form != Value::Form::kText) {
            throw Refusal("a text is wanted, not " + written(value));
        }
        slot.storage.assign(value.text.begin(), value.text.end());
        slot.storage.push_back(0);
        slot.elements = slot.storage.size();
        return;
    }
    if (parameter.counter == kNoCounter && parameter.count == 1) {
        slot.storage.resize(parameter.type.size);
        store_element(parameter.type, value, slot.storage.data(), context);
        slot.elements = 1;
        return;
    }
    slot.storage = array_of(parameter.type, value, is_bitmap(parameter) ? parameter.count : 0, context);
    slot.elements = slot.storage.size() / parameter.type.size;
}

/** The count that an array asks for, when the line leaves it out, is as many elements as the line gives. */
void Arguments::infer_counts(const std::vector<const Value *> &values) {
    for (size_t i = 0; i < slots_.size(); ++i) {
        const Parameter &parameter = *slots_[i].parameter;
        if (values[i] == nullptr && parameter.direction == Direction::kValue) {
            size_t elements = 0;
            for (const Slot &slot : slots_) {
                if (slot.parameter->counter == static_cast<int>(i)) {
                    elements = std::max(elements, slot.elements);
                }
            }
            slots_[i].elements = 1;
            slots_[i].storage.resize(parameter.type.size);
            store_number(parameter.type, static_cast<int64_t>(elements), slots_[i].storage.data());
        }
    }
}

size_t Arguments::extent(const Parameter &parameter) const {
    if (parameter.counter == kNoCounter) {
        return parameter.count;
    }
    const Slot &counter = slots_[static_cast<size_t>(parameter.counter)];
    if (counter.storage.empty()) {
        return 0;
    }
    // Without elements there is nothing that a call could touch; a negative count is the call's to judge.
    const int64_t count = load_number(counter.parameter->type, counter.storage.data());
    return count < 0 ? 0 : static_cast<size_t>(count);
}

/** Completes a slot's storage to the extent that the call may touch, or refuses what would leave it. */
void Arguments::make_room(Slot &slot) {
    const Parameter &parameter = *slot.parameter;
    if (parameter.direction == Direction::kValue || slot.is_null || parameter.shape == Shape::kList ||
        parameter.type.kind == Kind::kText) {
        return;
    }
    if (parameter.shape == Shape::kOutPointer) {
        slot.elements = 1;
        slot.storage.resize(sizeof(void *));
        return;
    }
    const size_t wanted = extent(parameter);
    if (wanted > kMaxElements) {
        throw Refusal(about(parameter, "a count of " + std::to_string(wanted) + " is more than the " +
                                           std::to_string(kMaxElements) + " elements that the shell provides"));
    }
    const bool counted = parameter.counter != kNoCounter;
    if (is_input(parameter) && counted && wanted > slot.elements) {
        throw Refusal(about(parameter, "the count says " + std::to_string(wanted) + ", but " +
                                           std::to_string(slot.elements) + " elements are given"));
    }
    if (slot.elements > wanted && !(counted && is_input(parameter))) {
        throw Refusal(about(parameter, "there is room for " + std::to_string(wanted) + " elements, " +
                                           std::to_string(slot.elements) + " are given"));
    }
    if (is_input(parameter) && !counted && parameter.type.kind == Kind::kU8 && slot.elements < wanted) {
        throw Refusal(about(
            parameter, std::to_string(wanted) + " bytes are wanted, " + std::to_string(slot.elements) + " are given"));
    }
    slot.elements = std::max(slot.elements, wanted);
    slot.storage.resize(std::max<size_t>(slot.elements * parameter.type.size, 1));
}

}  // namespace adpsh
