// What of other programs' texts reaches a terminal.
#include "text/printable.h"

#include <gtest/gtest.h>

namespace text {
namespace printable_test {

TEST(OnOneLine, KeepsWhatCanBeSeen) {
    for (const char *seen : {"", "link up", "Z\xC3\xBCrich \xE2\x82\xAC \xF0\x9F\x90\xA7", "a/b 'c' \"d\" ~"}) {
        EXPECT_EQ(on_one_line(seen), seen);
    }
}

TEST(OnOneLine, EscapesControlCharacters) {
    EXPECT_EQ(on_one_line("up\n  9.9  5/0 PORT port1: down"), "up\\n  9.9  5/0 PORT port1: down");
    EXPECT_EQ(on_one_line("\x1b[2J\r\t\b\x7f"), "\\x1b[2J\\r\\t\\x08\\x7f");
    EXPECT_EQ(on_one_line(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(OnOneLine, EscapesBackslashesSoThatNoTextIsTakenForAnother) {
    EXPECT_EQ(on_one_line("a\\nb"), "a\\\\nb");
    EXPECT_NE(on_one_line("a\\nb"), on_one_line("a\nb"));
}

TEST(OnOneLine, EscapesWhatATerminalObeysBeyondAscii) {
    EXPECT_EQ(on_one_line("\xC2\x9B"
                          "31m"),
              "\\xc2\\x9b31m")
        << "the one-character form of ESC [";
    EXPECT_EQ(on_one_line("\xE2\x80\xAE"), "\\xe2\\x80\\xae") << "text from right to left";
    EXPECT_EQ(on_one_line("\xE2\x80\xA8"), "\\xe2\\x80\\xa8") << "a line separator";
    EXPECT_EQ(on_one_line("\xEF\xBB\xBF"), "\\xef\\xbb\\xbf");
}

TEST(OnOneLine, EscapesWhatIsNotUtf8OctetByOctet) {
    EXPECT_EQ(on_one_line("\xFF"), "\\xff");
    EXPECT_EQ(on_one_line("a\x80z"), "a\\x80z") << "a part without a start";
    EXPECT_EQ(on_one_line("\xC3"), "\\xc3") << "cut short";
    EXPECT_EQ(on_one_line("\xE2\x82z"), "\\xe2\\x82z");
    EXPECT_EQ(on_one_line("\xC0\x8A"), "\\xc0\\x8a") << "a line break, longer than it must be";
    EXPECT_EQ(on_one_line("\xED\xA0\x80"), "\\xed\\xa0\\x80") << "half of a pair";
    EXPECT_EQ(on_one_line("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "beyond the last character";
    EXPECT_EQ(on_one_line("\xF8\x88\x80\x80\x80"), "\\xf8\\x88\\x80\\x80\\x80");
}

TEST(PrintableLines, KeepsLinesAndBackslashes) {
    EXPECT_EQ(printable_lines("one\ntwo \\x1b\n"), "one\ntwo \\x1b\n");
    EXPECT_EQ(printable_lines("one\r\n\x1b]0;title\a\xFF\xC2\x9B"), "one\\r\n\\x1b]0;title\\x07\\xff\\xc2\\x9b");
}

}  // namespace printable_test
}  // namespace text
