// The shell's parser: errors are inside the line, and a command is the same when it is written and parsed again.
#include <string>

#include "tests/fuzz/fuzz.h"
#include "tools/adpsh/parser.h"

namespace {

using adpsh::Argument;
using adpsh::Value;
using fuzz::expect;

constexpr size_t kLongestShown = 64;

void write(const Argument &argument, std::string *out);

void write_items(const Value &value, char opening, char closing, std::string *out) {
    *out += opening;
    for (const Argument &item : value.items) {
        write(item, out);
        *out += &item == &value.items.back() ? "" : " , ";
    }
    *out += closing;
}

void write_text(const std::string &text, std::string *out) {
    *out += '"';
    for (const char c : text) {
        switch (c) {
            case '\n':
                *out += "\\n";
                break;
            case '\r':
                *out += "\\r";
                break;
            case '\\':
            case '"':
                *out += '\\';
                [[fallthrough]];
            default:
                *out += c;
        }
    }
    *out += '"';
}

void write(const Argument &argument, std::string *out) {
    *out += argument.name.empty() ? "" : argument.name + " =\t";
    switch (argument.value.form) {
        case Value::Form::kWord:
            *out += argument.value.text;
            break;
        case Value::Form::kText:
            write_text(argument.value.text, out);
            break;
        case Value::Form::kList:
            write_items(argument.value, '[', ']', out);
            break;
        case Value::Form::kBraces:
            write_items(argument.value, '{', '}', out);
            break;
    }
}

bool is_same(const Argument &one, const Argument &other) {
    bool same = one.name == other.name && one.value.form == other.value.form && one.value.text == other.value.text &&
                one.value.items.size() == other.value.items.size();
    for (size_t i = 0; same && i < one.value.items.size(); ++i) {
        same = is_same(one.value.items[i], other.value.items[i]);
    }
    return same;
}

void expect_same_again(const adpsh::Command &command) {
    std::string line = command.name;
    for (const Argument &argument : command.arguments) {
        line += ' ';
        write(argument, &line);
        expect(adpsh::written(argument.value).size() < kLongestShown, "a shown value is short");
    }
    const auto again = adpsh::parse_line(line);
    const auto *read = std::get_if<adpsh::Command>(&again);
    // Writing doubles backslashes and adds blanks, which may make a long line too long.
    expect(read != nullptr || line.size() > adpsh::kMaxLine, "a written line is taken");
    if (read == nullptr) {
        return;
    }
    expect(read->name == command.name && read->arguments.size() == command.arguments.size(), "the same call");
    for (size_t i = 0; i < command.arguments.size(); ++i) {
        expect(is_same(read->arguments[i], command.arguments[i]), "the same argument");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string line(data, data + size);
    const auto result = adpsh::parse_line(line);
    if (const auto *error = std::get_if<adpsh::Error>(&result)) {
        expect(!error->text.empty(), "an error has a message");
        expect(error->column >= 1 && error->column <= line.size() + 1, "an error is inside the line");
    } else {
        expect_same_again(std::get<adpsh::Command>(result));
    }
    return 0;
}
