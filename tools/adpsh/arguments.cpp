// Assigns a line's arguments to parameters and fills their storage.
#include "tools/adpsh/arguments.h"

#include "text/suggest.h"
#include "tools/adpsh/line_error.h"
#include "tools/adpsh/parameter.h"
#include "tools/adpsh/usage.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace adpsh {

using calls::Direction;
using calls::Kind;
using calls::Param;
using calls::Shape;

namespace {

std::string about(const Param &parameter, const std::string &text) {
    return std::string("'") + parameter.name + "': " + text;
}

bool is_bitmap(const Param &parameter) {
    constexpr size_t kPairOfWords = 2;
    return parameter.element.kind == Kind::kU32 && parameter.counted_by == calls::kNotCounted &&
           (parameter.extent == kPairOfWords || parameter.extent == kPortSetWords);
}

/** Throws a LineError if a call with this extent would access more or less than the line gives. */
void check_elements(const Param &parameter, size_t given, size_t extent) {
    const std::string got = ", got " + std::to_string(given);
    const bool is_counted = parameter.counted_by != calls::kNotCounted;
    if (extent > kMaxElements) {
        throw LineError("the count " + std::to_string(extent) + " exceeds the " + std::to_string(kMaxElements) +
                        " elements that the shell provides");
    }
    if (is_counted && parameter.is_read()) {
        if (given < extent) {
            throw LineError("expected " + std::to_string(extent) + " elements by the count" + got);
        }
        return;
    }
    check_count(given, extent);
    if (parameter.is_read() && parameter.element.kind == Kind::kU8 && given < extent) {
        throw LineError("expected " + std::to_string(extent) + " bytes" + got);
    }
}

}  // namespace

/** "; one of A, B" for a parameter whose constants the header lists. */
std::string one_of(const exported::Call &call, const Param &parameter, const Value &value) {
    std::string names;
    if (value.form == Value::Form::kWord && parameter.direction == Direction::kValue) {
        for (const exported::Constant *const constant : constants_of(call, parameter)) {
            names += (names.empty() ? "; one of " : ", ") + std::string(constant->name);
        }
    }
    return names;
}

Arguments::Arguments(const exported::Call &call, const Command &command, const Variables &variables)
    : call_(call), variables_(variables), slots_(call.params.size()) {
    for (size_t i = 0; i < slots_.size(); ++i) {
        slots_[i].parameter = &call.params[i];
    }
    const std::vector<const Value *> values = assign(command);
    for (size_t i = 0; i < slots_.size(); ++i) {
        if (values[i] != nullptr) {
            try {
                fill(i, *values[i]);
            } catch (const LineError &error) {
                throw LineError(about(call.params[i], error.what()) + one_of(call, call.params[i], *values[i]));
            }
        }
    }
    infer_counts(values);
    for (Slot &slot : slots_) {
        extend(slot);
    }
}

void Arguments::fill_outputs(uint8_t byte) {
    for (Slot &slot : slots_) {
        if (slot.parameter->direction == Direction::kOut) {
            std::fill(slot.storage.begin(), slot.storage.end(), byte);
        }
    }
}

int64_t Arguments::invoke() {
    std::vector<void *> memory;
    for (Slot &slot : slots_) {
        memory.push_back(slot.is_null ? nullptr : slot.storage.data());
    }
    return exported::invoke(call_, call_.function, memory.data());
}

size_t Arguments::parameter_named(const std::string &name) const {
    std::vector<std::string_view> names;
    for (size_t i = 0; i < slots_.size(); ++i) {
        if (name == call_.params[i].name) {
            return i;
        }
        names.emplace_back(call_.params[i].name);
    }
    throw LineError(std::string(call_.name) + " has no argument '" + name + "'" + text::did_you_mean(name, names));
}

/** The value for each parameter, null for none. An output's initial content is only given by name. */
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
            throw LineError("'" + argument.name + "' is given twice");
        }
        value = &argument.value;
    }
    const std::vector<size_t> open = positions(positional.size(), values);
    for (size_t i = 0; i < open.size(); ++i) {
        values[open[i]] = positional[i];
    }
    return values;
}

/** The inputs that the unnamed arguments are for: all without a name, with or without the inferable counts. */
std::vector<size_t> Arguments::positions(size_t given, const std::vector<const Value *> &named) const {
    std::vector<size_t> all;
    std::vector<size_t> needed;
    std::vector<size_t> inputs;
    for (size_t i = 0; i < slots_.size(); ++i) {
        if (named[i] == nullptr && call_.params[i].is_read()) {
            all.push_back(i);
            if (!is_inferable_count(call_, i)) {
                needed.push_back(i);
            }
            if (!is_inferable_count(call_, i) && !is_optional_output(call_, i)) {
                inputs.push_back(i);
            }
        }
    }
    if (given == all.size()) {
        return all;
    }
    if (given == needed.size()) {
        return needed;
    }
    if (given == inputs.size()) {
        return inputs;
    }
    throw LineError(std::string(given < needed.size() ? "too few"
                                : given > all.size()  ? "too many"
                                                      : "ambiguous") +
                    " arguments; usage: " + usage(call_));
}

void Arguments::fill(size_t index, const Value &value) {
    Slot &slot = slots_[index];
    const Param &parameter = *slot.parameter;
    if (parameter.shape == Shape::kOutPointer) {
        throw LineError("the call sets this address");
    }
    if (parameter.direction == Direction::kValue) {
        return fill_value(slot, value);
    }
    if (is_null(value)) {
        if (!parameter.is_read()) {
            throw LineError("an output cannot be null");
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
    const calls::Element &element = slot.parameter->element;
    slot.elements = 1;
    slot.storage.resize(element.size);
    if (element.kind == Kind::kCallback) {
        if (value.form != Value::Form::kWord || (value.text != "print" && value.text != "none" && !is_null(value))) {
            throw LineError("a callback is 'print' or 'none', not " + written(value));
        }
        void (*const function)() = value.text == "print" ? element.callback->report : nullptr;
        static_assert(sizeof function == sizeof(void *));
        std::memcpy(slot.storage.data(), &function, sizeof function);
        return;
    }
    const size_t before = blocks_.size();
    Context context{variables_, blocks_};
    store_element(element, value, slot.storage.data(), context);
    if (element.kind == Kind::kWord && blocks_.size() > before) {
        slot.pointed = &blocks_.back();
        slot.before = blocks_.back();
    }
}

void Arguments::fill_array(Slot &slot, const Value &value) {
    const Param &parameter = *slot.parameter;
    Context context{variables_, blocks_};
    if (parameter.is_text()) {
        if (value.form != Value::Form::kWord && value.form != Value::Form::kText) {
            throw LineError("expected text, not " + written(value));
        }
        slot.storage.assign(value.text.begin(), value.text.end());
        slot.storage.push_back(0);
        slot.elements = slot.storage.size();
        return;
    }
    if (parameter.counted_by == calls::kNotCounted && parameter.extent == 1) {
        slot.storage.resize(parameter.element.size);
        store_element(parameter.element, value, slot.storage.data(), context);
        slot.elements = 1;
        return;
    }
    slot.storage = array_of(parameter.element, value, is_bitmap(parameter) ? parameter.extent : 0, context);
    slot.elements = slot.storage.size() / parameter.element.size;
}

/** A count that the line leaves out is the number of elements that the line gives. */
void Arguments::infer_counts(const std::vector<const Value *> &values) {
    for (size_t i = 0; i < slots_.size(); ++i) {
        const Param &parameter = *slots_[i].parameter;
        if (values[i] == nullptr && parameter.direction == Direction::kValue) {
            size_t elements = 0;
            for (const Slot &slot : slots_) {
                if (slot.parameter->counted_by == static_cast<int>(i)) {
                    elements = std::max(elements, slot.elements);
                }
            }
            slots_[i].elements = 1;
            slots_[i].storage.resize(parameter.element.size);
            calls::store(parameter.element.kind, slots_[i].storage.data(), static_cast<int64_t>(elements));
        }
    }
}

size_t Arguments::extent(const Param &parameter) const {
    if (parameter.counted_by == calls::kNotCounted) {
        return parameter.extent;
    }
    const Slot &counter = slots_[static_cast<size_t>(parameter.counted_by)];
    if (counter.storage.empty()) {
        return 0;
    }
    // A negative count is the call's to reject; it has no elements.
    const int64_t count = calls::load(counter.parameter->element.kind, counter.storage.data());
    return count < 0 ? 0 : static_cast<size_t>(count);
}

/** Extends a slot's storage to what the call may access. */
void Arguments::extend(Slot &slot) {
    const Param &parameter = *slot.parameter;
    if (!parameter.is_pointer() || slot.is_null || parameter.shape == Shape::kList || parameter.is_text()) {
        return;
    }
    if (parameter.shape == Shape::kOutPointer) {
        slot.elements = 1;
        slot.storage.resize(sizeof(void *));
        return;
    }
    const size_t needed = extent(parameter);
    try {
        check_elements(parameter, slot.elements, needed);
    } catch (const LineError &error) {
        throw LineError(about(parameter, error.what()));
    }
    slot.elements = std::max(slot.elements, needed);
    slot.storage.resize(std::max<size_t>(slot.elements * parameter.element.size, 1));
}

}  // namespace adpsh
