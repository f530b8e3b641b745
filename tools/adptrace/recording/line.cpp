// Parses a line without keeping more than its members of the first level: the depth of what is in them is limited, and
// they are parsed again when they are looked at.
#include "tools/adptrace/recording/line.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {
namespace {

using nlohmann::json;

// A rule with its qualifiers is an object in an array in an object.
constexpr size_t kMaxLevels = 32;

constexpr std::string_view kNames[] = {
    "adptrace", "byte_order", "word_bits", "started",   "command", "process", "parent", "at",        "program",
    "library",  "of",         "board",     "begin",     "within",  "thread",  "call",   "arguments", "end",
    "result",   "outputs",    "frame",     "interface", "octets",  "exit",    "status", "signal"};

std::optional<size_t> place_of(std::string_view name) {
    const auto *const found = std::find(std::begin(kNames), std::end(kNames), name);
    return found == std::end(kNames) ? std::nullopt : std::optional<size_t>(found - std::begin(kNames));
}

}  // namespace

/** Receives the parser's events. */
class Line::Handler : public nlohmann::json_sax<json> {
  public:
    explicit Handler(Line &line) : line_(line) { static_assert(std::size(kNames) == kMembers); }

    bool null() override { return take(Type::kNull); }
    bool boolean(bool /*value*/) override { return take(Type::kOther); }
    bool number_integer(int64_t /*value*/) override { return take(Type::kOther); }
    bool number_unsigned(uint64_t value) override { return take(Type::kNumber, value); }
    bool number_float(double /*value*/, const std::string & /*text*/) override { return take(Type::kOther); }
    bool string(std::string &value) override { return take(Type::kText, 0, &value); }
    bool binary(json::binary_t & /*value*/) override { return false; }
    bool start_object(size_t /*count*/) override { return open(Type::kObject); }
    bool start_array(size_t /*count*/) override { return open(Type::kArray); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(std::string &name) override;
    bool parse_error(size_t /*place*/, const std::string & /*token*/, const json::exception & /*error*/) override {
        return false;
    }

  private:
    bool take(Type type, uint64_t number = 0, std::string *text = nullptr);
    bool open(Type type);
    bool close() {
        --levels_;
        return true;
    }

    Line &line_;
    size_t levels_ = 0;
    bool is_first_ = true;
    Member *member_ = nullptr; /**< whose value comes next */
};

bool Line::Handler::key(std::string &name) {
    if (levels_ != 1) {
        return true;
    }
    const auto place = place_of(name);
    if (is_first_) {
        line_.kind_ = place ? kNames[*place] : std::string_view();
        is_first_ = false;
    }
    member_ = place ? &line_.members_[*place] : nullptr;
    if (member_ != nullptr && member_->type != Type::kAbsent) {
        line_.refuse("has the member '" + name + "' twice");
    }
    return true;
}

bool Line::Handler::take(Type type, uint64_t number, std::string *text) {
    if (levels_ == 0) {
        return false;  // no object
    }
    if (levels_ == 1 && member_ != nullptr) {
        member_->type = type;
        member_->number = number;
        if (text != nullptr) {
            member_->text = std::move(*text);
        }
    }
    return true;
}

bool Line::Handler::open(Type type) {
    if (levels_ == 0 ? type != Type::kObject : !take(type)) {
        return false;
    }
    if (++levels_ > kMaxLevels) {
        line_.refuse("has values that are nested more than " + std::to_string(kMaxLevels) + " deep");
    }
    return true;
}

std::optional<Line> Line::of(std::string_view text, size_t number) {
    Line line(number);
    if (text.size() > kMaxLine) {
        line.refuse("is longer than 1 MiB");
    }
    Handler handler(line);
    // The parser takes a NUL for the end.
    if (text.find('\0') != std::string_view::npos || !json::sax_parse(text.begin(), text.end(), &handler)) {
        return std::nullopt;
    }
    return line;
}

const Line::Member &Line::member(std::string_view name) const {
    return members_.at(place_of(name).value());
}

bool Line::has(std::string_view name) const {
    return member(name).type != Type::kAbsent;
}

uint64_t Line::integer(std::string_view name, uint64_t least, uint64_t most) const {
    const Member &found = member(name);
    if (found.type != Type::kNumber || found.number < least || found.number > most) {
        refuse("needs a number from " + std::to_string(least) + " to " + std::to_string(most) + " as '" +
               std::string(name) + "'");
    }
    return found.number;
}

const std::string &Line::text(std::string_view name) const {
    if (member(name).type != Type::kText) {
        refuse("needs a text as '" + std::string(name) + "'");
    }
    return member(name).text;
}

const std::string &Line::text_or_null(std::string_view name) const {
    return member(name).type == Type::kNull ? member(name).text : text(name);
}

void Line::expect_object(std::string_view name) const {
    if (member(name).type != Type::kObject) {
        refuse("needs an object as '" + std::string(name) + "'");
    }
}

void Line::expect_array(std::string_view name) const {
    if (member(name).type != Type::kArray) {
        refuse("needs an array as '" + std::string(name) + "'");
    }
}

void Line::expect_any(std::string_view name) const {
    if (!has(name)) {
        refuse("has no '" + std::string(name) + "'");
    }
}

void Line::refuse(const std::string &reason) const {
    throw BadRecording("line " + std::to_string(number_) + " " + reason + ".");
}

}  // namespace adptrace
