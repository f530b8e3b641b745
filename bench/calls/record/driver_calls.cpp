// Driver and services calls as C expressions, and their answers.
#include "bench/calls/record/driver_calls.h"

#include <cstring>
#include <fstream>
#include <set>
#include <stdexcept>

#include "calls/call_table.h"
#include "tests/fault_injection/row.h"
#include "tests/fault_injection/target.h"
#include "tests/support/recording_driver.h"

namespace record {
namespace {

constexpr const char *kLogger = "Log_logging_func";
constexpr const char *kAddressText = "onu_mac2str";
constexpr const char *kQueue = "equeue_send_ucast";

Blocks *blocks_under_way = nullptr;
std::vector<std::string> written;

/** A queue's message ends with the address of a record, which a driver in another process reads. */
std::string message(std::span<const uint8_t> bytes) {
    static std::vector<uint8_t> record(calls::kEventRecordNumbers * sizeof(uint16_t));
    std::vector<uint8_t> copy(bytes.begin(), bytes.end());
    const auto address = reinterpret_cast<uintptr_t>(record.data());
    std::memcpy(&copy[copy.size() - sizeof address], &address, sizeof address);
    blocks_under_way->add(record);
    return blocks_under_way->add(copy);
}

std::string value(const calls::Param &param, const recording::Arguments &arguments) {
    if (param.element.kind == calls::Kind::kStruct) {
        return "*(const " + std::string(param.element.layout->name) + " *)" +
               blocks_under_way->add(arguments.bytes(param.name));
    }
    const auto address =
        param.element.kind == calls::Kind::kWord ? blocks_under_way->find(arguments.word(param.name)) : std::nullopt;
    return address ? "(uintptr_t)" + *address : std::to_string(arguments.number(param.name)) + "LL";
}

std::string argument(const calls::Param &param, const recording::Arguments &arguments) {
    if (!param.is_pointer()) {
        return value(param, arguments);
    }
    if (arguments.pointer(param.name) == nullptr) {
        return "0";
    }
    if (param.is_text()) {
        return literal(arguments.text(param.name));
    }
    return param.shape == calls::Shape::kMessage ? message(arguments.bytes(param.name))
                                                 : blocks_under_way->add(arguments.bytes(param.name));
}

/** What a format asks for besides: empty texts and zeros. */
std::string format_arguments(const std::string &format) {
    std::string text;
    for (size_t at = format.find('%'); at != std::string::npos; at = format.find('%', at + 1)) {
        at = format.find_first_not_of("0123456789.-+ #l", at + 1);
        if (at != std::string::npos && format[at] != '%') {
            text += format[at] == 's' ? ", \"\"" : ", 0";
        }
    }
    return text;
}

void write_down(const calls::Call &call, const recording::Arguments &arguments) {
    std::string text = std::string(call.name) + "(";
    const char *separator = "";
    for (const calls::Param &param : call.params) {
        text += separator + argument(param, arguments);
        separator = ", ";
    }
    text += call.name == std::string(kLogger) ? format_arguments(arguments.text("format")) : "";
    written.push_back(text + ")");
}

void clear_outputs(const calls::Call &call, const recording::Arguments &arguments) {
    for (const calls::Param &param : call.params) {
        if (param.direction == calls::Direction::kOut) {
            std::memset(arguments.pointer(param.name), 0, arguments.bytes(param.name).size());
        }
    }
}

void give_answers(const std::string &path, std::set<std::string> &answered) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        line = fault_injection::trimmed(line.substr(0, line.find('#')));
        if (!line.empty()) {
            fault_injection::give(line);
            answered.insert(line.substr(0, line.find('.')));
        }
    }
    if (answered.empty()) {
        throw std::runtime_error(path + " has no answers");
    }
}

}  // namespace

void answer_from(const std::string &path) {
    std::set<std::string> answered;
    give_answers(path, answered);
    for (const calls::Call &call : calls::calls()) {
        if (call.name == std::string(kAddressText)) {
            continue;  // its result is a text, which an action cannot give
        }
        const bool is_answered = answered.count(call.name) != 0;
        recording::driver().on(call.name).does([&call, is_answered](recording::Arguments &arguments) {
            if (blocks_under_way != nullptr) {
                write_down(call, arguments);
            }
            if (!is_answered) {
                clear_outputs(call, arguments);
            }
            return call.name == std::string(kQueue) ? 1 : 0;
        });
    }
}

void begin(Blocks &blocks) {
    written.clear();
    static_cast<void>(recording::driver().take());
    blocks_under_way = &blocks;
}

std::vector<std::string> finish() {
    blocks_under_way = nullptr;
    // Calls without an action are only in the driver's own trace. Where they stand among the others costs the same.
    for (const std::string &line : recording::driver().take()) {
        if (line.rfind(kAddressText, 0) == 0) {
            written.push_back("(long)(intptr_t)" + std::string(kAddressText) +
                              "((const void *)\"\\2\\0\\0\\0\\0\\1\")");
        }
    }
    return std::exchange(written, {});
}

size_t remote_calls() {
    return recording::driver().count() - recording::driver().count(kAddressText);
}

}  // namespace record
