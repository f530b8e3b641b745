/**
 * @file line.h
 * One line of a recording: the members that say what happened, without the values of calls.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace adptrace {

/** A line is an object; its first member says what kind of line it is. What is wrong is thrown as a BadRecording. */
class Line {
  public:
    /** @return none if the text is no whole object. */
    static std::optional<Line> of(std::string_view text, size_t number);

    /** The first member's name; empty if it is none that a recording has. */
    [[nodiscard]] std::string_view kind() const { return kind_; }
    [[nodiscard]] size_t number() const { return number_; }
    [[nodiscard]] bool has(std::string_view member) const;
    /** A number from @p least to @p most, which the line must have. */
    [[nodiscard]] uint64_t integer(std::string_view member, uint64_t least, uint64_t most) const;
    [[nodiscard]] const std::string &text(std::string_view member) const;
    /** The text, empty for null. */
    [[nodiscard]] const std::string &text_or_null(std::string_view member) const;
    void expect_object(std::string_view member) const;
    void expect_array(std::string_view member) const;
    void expect_any(std::string_view member) const;
    /** Throws a BadRecording with the number of the line; @p reason is the rest of the sentence. */
    [[noreturn]] void refuse(const std::string &reason) const;

  private:
    enum class Type : uint8_t { kAbsent, kNumber, kText, kNull, kObject, kArray, kOther };
    struct Member {
        Type type = Type::kAbsent;
        uint64_t number = 0;
        std::string text;
    };
    class Handler;

    explicit Line(size_t number) : number_(number) {}
    [[nodiscard]] const Member &member(std::string_view name) const;

    static constexpr size_t kMembers = 26;
    size_t number_;
    std::string_view kind_;
    std::array<Member, kMembers> members_;
};

}  // namespace adptrace
