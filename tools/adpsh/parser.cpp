// A recursive-descent parser for lines of the shell.
#include "tools/adpsh/parser.h"

#include <utility>

namespace adpsh {

namespace {

constexpr std::string_view kSpecial = "[]{}=,\"";
constexpr size_t kShownValue = 40;
constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
bool is_special(char c) {
    return kSpecial.find(c) != std::string_view::npos;
}

bool is_control(char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code < kFirstPrintable && c != '\t') || code == kDelete;
}

class Parser {
  public:
    explicit Parser(std::string_view line) : line_(line) {}

    Command command() {
        Command result;
        skip_blanks();
        if (at_end()) {
            return result;
        }
        if (is_special(peek())) {
            fail("a line begins with the name of a call or a command: try help");
        }
        result.name = word();
        for (skip_blanks(); !at_end(); skip_blanks()) {
            if (peek() == ',') {
                fail("commas separate the items inside brackets; arguments are separated by blanks");
            }
            result.arguments.push_back(argument(0));
        }
        return result;
    }

    [[nodiscard]] size_t column() const { return position_ + 1; }

  private:
    [[noreturn]] void fail(std::string text) const { throw Error{std::move(text), column()}; }

    [[nodiscard]] bool at_end() const { return position_ == line_.size(); }
    [[nodiscard]] char peek() const { return line_[position_]; }

    /** Skips blanks, and a comment, which extends to the end of the line. */
    void skip_blanks() {
        while (!at_end() && is_blank(peek())) {
            ++position_;
        }
        if (!at_end() && peek() == '#') {
            position_ = line_.size();
        }
    }

    std::string word() {
        const size_t start = position_;
        while (!at_end() && !is_blank(peek()) && !is_special(peek())) {
            ++position_;
        }
        return std::string(line_.substr(start, position_ - start));
    }

    Argument argument(size_t depth) {
        Argument result;
        result.value = value(depth);
        skip_blanks();
        if (at_end() || peek() != '=') {
            return result;
        }
        if (result.value.form != Value::Form::kWord) {
            fail("only a name can precede '='");
        }
        ++position_;
        skip_blanks();
        result.name = std::exchange(result.value.text, {});
        if (at_end()) {
            fail("no value after '" + result.name + "='");
        }
        result.value = value(depth);
        return result;
    }

    Value value(size_t depth) {
        switch (peek()) {
            case '"':
                return text();
            case '[':
                return brackets(Value::Form::kList, ']', depth);
            case '{':
                return brackets(Value::Form::kBraces, '}', depth);
            default:
                break;
        }
        if (is_special(peek())) {
            fail(std::string("unexpected '") + peek() + "'");
        }
        return {Value::Form::kWord, word(), {}};
    }

    Value text() {
        Value result{Value::Form::kText, {}, {}};
        for (++position_; !at_end() && peek() != '"'; ++position_) {
            if (peek() == '\\') {
                ++position_;
                result.text += escaped();
            } else {
                result.text += peek();
            }
        }
        if (at_end()) {
            fail("the text has no closing quote");
        }
        ++position_;
        return result;
    }

    [[nodiscard]] char escaped() const {
        switch (at_end() ? '\0' : peek()) {
            case 'n':
                return '\n';
            case 'r':
                return '\r';
            case 't':
                return '\t';
            case '\\':
            case '"':
                return peek();
            default:
                fail(R"(unknown escape: only \\, \", \n, \r and \t can follow a backslash)");
        }
    }

    Value brackets(Value::Form form, char closing, size_t depth) {
        if (depth == kMaxDepth) {
            fail("brackets are nested too deeply");
        }
        Value result{form, {}, {}};
        ++position_;
        for (bool may_be_comma = false;; may_be_comma = true) {
            skip_blanks();
            if (may_be_comma && !at_end() && peek() == ',') {
                ++position_;
                skip_blanks();
                if (!at_end() && peek() == closing) {
                    fail("an item is missing after the comma");
                }
            }
            if (at_end()) {
                fail(std::string("a closing '") + closing + "' is missing");
            }
            if (peek() == closing) {
                ++position_;
                return result;
            }
            result.items.push_back(argument(depth + 1));
            if (form == Value::Form::kList && !result.items.back().name.empty()) {
                fail("a list cannot hold named items; use { }");
            }
        }
    }

    std::string_view line_;
    size_t position_ = 0;
};

void write(const Value &value, std::string &out) {
    if (out.size() > kShownValue) {
        return;
    }
    if (value.form == Value::Form::kWord) {
        out += value.text;
        return;
    }
    if (value.form == Value::Form::kText) {
        out += '"' + value.text + '"';
        return;
    }
    const bool list = value.form == Value::Form::kList;
    out += list ? '[' : '{';
    for (const Argument &item : value.items) {
        if (&item != &value.items.front()) {
            out += ", ";
        }
        out += item.name.empty() ? "" : item.name + "=";
        write(item.value, out);
    }
    out += list ? ']' : '}';
}

}  // namespace

std::variant<Command, Error> parse_line(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    if (line.size() > kMaxLine) {
        return Error{"the line is too long", kMaxLine};
    }
    for (size_t i = 0; i < line.size(); ++i) {
        if (is_control(line[i])) {
            return Error{"the line contains a control character", i + 1};
        }
    }
    try {
        return Parser(line).command();
    } catch (Error &error) {
        return std::move(error);
    }
}

std::string written(const Value &value) {
    std::string result;
    write(value, result);
    if (result.size() > kShownValue) {
        result = result.substr(0, kShownValue) + "...";
    }
    return result;
}

}  // namespace adpsh
