// Stores the values of assignments.
#include "tests/fault_injection/target.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "tests/fault_injection/plan_reader.h"
#include "tests/support/library_test.h"
#include "tools/adpsh/convert.h"

namespace fault_injection {
namespace {

/** A value that fills every byte of its target. */
constexpr std::string_view kEveryByte = "every ";
/** A value that takes the first bytes of its target as a 32-bit number of this machine. */
constexpr std::string_view kWord = "word ";

adpsh::Value value_of(const std::string &text) {
    const auto parsed = adpsh::parse_line("x " + text);
    if (std::holds_alternative<adpsh::Error>(parsed)) {
        throw std::runtime_error(text + ": " + std::get<adpsh::Error>(parsed).text);
    }
    return std::get<adpsh::Command>(parsed).arguments.front().value;
}

std::vector<size_t> indexes_of(std::string_view text) {
    std::vector<size_t> indexes;
    while (!text.empty()) {
        const size_t end = text.find(']');
        indexes.push_back(std::stoul(std::string(text.substr(1, end - 1))));
        text.remove_prefix(end + 1);
    }
    return indexes;
}

bool has_room(const adpsh::Value &value) {
    return value.form == adpsh::Value::Form::kList || value.form == adpsh::Value::Form::kBraces;
}

/** Stores a list, a set or one element, all of which must have room. */
void store_values(const calls::Element &type, size_t count, void *to, const adpsh::Value &value) {
    const adpsh::Variables none;
    std::deque<adpsh::Bytes> room;
    adpsh::Context context{none, room};
    const bool is_record = type.kind == calls::Kind::kStruct && value.form == adpsh::Value::Form::kBraces;
    const bool is_bytes = type.kind == calls::Kind::kU8 && count > 1;
    if (count == 1 || is_record || !(has_room(value) || is_bytes)) {
        return adpsh::store_element(type, value, to, context);
    }
    const adpsh::Bytes bytes = adpsh::array_of(type, value, type.kind == calls::Kind::kU32 ? count : 0, context);
    if (bytes.size() > count * type.size) {
        throw std::runtime_error("there is no room for " + adpsh::written(value));
    }
    std::memcpy(to, bytes.data(), bytes.size());
}

const calls::Field &field_named(const calls::Element &type, const std::string &name) {
    if (type.layout != nullptr) {
        for (const calls::Field &field : type.layout->fields) {
            if (name == field.name) {
                return field;
            }
        }
    }
    throw std::runtime_error("there is no field " + name);
}

void store_field(const std::string &text, const calls::Element &type, uint8_t *record, const std::string &value) {
    const Target inside = target_of(text);
    const calls::Field &field = field_named(type, inside.name);
    store(inside, field.element, field.count, record + field.offset, value);
}

/** Tables of the library's own that a program does not see. */
bool assign_hidden(const Target &target, const std::string &value) {
    const bool is_link = target.name == "agg_link_status";
    if (!is_link && target.name != "port_hold_state") {
        return false;
    }
    store(target, {calls::Kind::kU8, 1}, is_link ? sizeof adp::agg_link_status : sizeof adp::port_hold_state,
          is_link ? static_cast<void *>(adp::agg_link_status) : adp::port_hold_state, value);
    return true;
}

/** Replaces a table of the map by a cleared one, or by none. */
template <typename T>
void replace(T *&table, const std::string &value) {
    std::free(table);
    table = value == "none" ? nullptr : static_cast<T *>(std::calloc(adp_max_phy_port_num + 1, sizeof(T)));
}

void give_struct(const calls::Param &param, const std::string &value, std::vector<uint8_t> &bytes) {
    for (const adpsh::Argument &item : value_of(value).items) {
        for (const calls::Field &field : param.element.layout->fields) {
            if (item.name == field.name) {
                calls::store(field.element.kind, bytes.data() + field.offset,
                             adpsh::number_of(item.value, calls::Kind::kU32));
            }
        }
    }
}

/** The bytes of a driver call's output: numbers, a struct's fields, or `every NN`. */
std::vector<uint8_t> output_bytes(const calls::Param &param, const std::string &value) {
    const size_t size = param.element.size;
    std::vector<uint8_t> bytes(size * param.extent);
    if (value.rfind(kEveryByte, 0) == 0) {
        bytes.assign(bytes.size(), adpsh::bytes_of(value_of(value.substr(kEveryByte.size())), {}).front());
    } else if (param.element.kind == calls::Kind::kStruct) {
        give_struct(param, value, bytes);
    } else {
        const adpsh::Value parsed = value_of(value);
        const std::vector<adpsh::Argument> one{{"", parsed}};
        const auto &items = parsed.form == adpsh::Value::Form::kList ? parsed.items : one;
        bytes.resize(std::max(bytes.size(), items.size() * size));
        for (size_t index = 0; index < items.size(); ++index) {
            calls::store(param.element.kind, &bytes[index * size],
                         adpsh::number_of(items[index].value, calls::Kind::kU64));
        }
    }
    return bytes;
}

}  // namespace

Target target_of(const std::string &text) {
    const size_t dot = text.find('.');
    const std::string whole = text.substr(0, dot);
    const size_t bracket = whole.find('[');
    return {whole.substr(0, bracket),
            bracket == std::string::npos ? std::vector<size_t>() : indexes_of(whole.substr(bracket)),
            dot == std::string::npos ? "" : text.substr(dot + 1)};
}

void store(const Target &target, const calls::Element &type, size_t count, void *to, const std::string &value) {
    auto *bytes = static_cast<uint8_t *>(to);
    if (!target.indexes.empty()) {
        const size_t index = target.indexes.front();
        if (index >= count) {
            throw std::runtime_error(target.name + " has no element " + std::to_string(index));
        }
        bytes += index * type.size;
        count = 1;
    }
    if (!target.part.empty()) {
        return store_field(target.part, type, bytes, value);
    }
    if (value.rfind(kEveryByte, 0) == 0) {
        std::memset(bytes, adpsh::bytes_of(value_of(value.substr(kEveryByte.size())), {}).front(), count * type.size);
        return;
    }
    if (value.rfind(kWord, 0) == 0) {
        calls::store(calls::Kind::kU32, bytes,
                     adpsh::number_of(value_of(value.substr(kWord.size())), calls::Kind::kU32));
        return;
    }
    store_values(type, count, bytes, value_of(value));
}

void assign_table(const Assignment &assignment) {
    Target target = target_of(assignment.target);
    if (assign_hidden(target, assignment.value)) {
        return;
    }
    const exported::Table *table = exported::find_table(target.name);
    if (table == nullptr) {
        throw std::runtime_error("there is no parameter or table " + target.name);
    }
    // A table's own address is only handed out for reading.
    void *address = const_cast<void *>(table->address);
    size_t rows = table->rows;
    if (table->is_pointer) {
        if (target.indexes.empty() && target.part.empty()) {
            return target.name == "intf_to_phy_port" ? replace(intf_to_phy_port, assignment.value)
                                                     : replace(intf_map_trunk, assignment.value);
        }
        address = *static_cast<void **>(address);
        rows = adp_max_phy_port_num + 1;
    }
    if (target.indexes.size() == 2) {
        target.indexes = {target.indexes[0] * table->columns + target.indexes[1]};
    } else if (!target.indexes.empty() && table->columns > 1) {
        // A row of a table with columns.
        address = static_cast<uint8_t *>(address) + target.indexes.front() * table->columns * table->element.size;
        target.indexes.clear();
        return store(target, table->element, table->columns, address, assignment.value);
    }
    store(target, table->element, rows * table->columns, address, assignment.value);
}

void give(const std::string &text) {
    for (const Assignment &assignment : assignments_of(text)) {
        const size_t dot = assignment.target.find('.');
        const std::string name = assignment.target.substr(0, dot);
        if (dot == std::string::npos) {
            recording::driver().on(name).returns(
                static_cast<int32_t>(adpsh::number_of(value_of(assignment.value), calls::Kind::kI32)));
            continue;
        }
        const std::string output = assignment.target.substr(dot + 1);
        const auto id = calls::find_call(name);
        const auto index = id ? calls::find_param(calls::call(*id), output) : std::nullopt;
        if (!index) {
            throw std::runtime_error("no driver call writes " + assignment.target);
        }
        recording::driver().on(name).sets_bytes(output,
                                                output_bytes(calls::call(*id).params[*index], assignment.value));
    }
}

}  // namespace fault_injection
