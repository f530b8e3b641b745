// The shell's language: what lines are parsed into, and the error messages.
#include "tools/adpsh/parser.h"

#include <gtest/gtest.h>

#include <random>

namespace adpsh {
namespace parser_test {

Command parsed(std::string_view line) {
    const auto result = parse_line(line);
    if (const Error *error = std::get_if<Error>(&result)) {
        ADD_FAILURE() << line << ": " << error->text;
        return {};
    }
    return std::get<Command>(result);
}

Error rejected(std::string_view line) {
    const auto result = parse_line(line);
    if (const Error *error = std::get_if<Error>(&result)) {
        return *error;
    }
    ADD_FAILURE() << "was accepted: " << line;
    return {};
}

/** A command with its structure visible. */
std::string shape(std::string_view line) {
    const Command command = parsed(line);
    std::string text = command.name;
    for (const Argument &argument : command.arguments) {
        text += "|" + (argument.name.empty() ? "" : argument.name + ":") + written(argument.value);
    }
    return text;
}

TEST(ParseLine, BlankLinesAndCommentsHaveNoName) {
    EXPECT_EQ(parsed("").name, "");
    EXPECT_EQ(parsed(" \t ").name, "");
    EXPECT_EQ(parsed("# a remark {").name, "");
    EXPECT_EQ(parsed("\r\n").name, "");
}

TEST(ParseLine, SeparatesWordsAtBlanks) {
    EXPECT_EQ(shape("call 1 0x2\t-3 ADP_AGG_INTF(2) 01:80:c2:00:00:00"),
              "call|1|0x2|-3|ADP_AGG_INTF(2)|01:80:c2:00:00:00");
}

TEST(ParseLine, EndsAtACommentThatOpensAWord) {
    EXPECT_EQ(shape("call 1 # 2"), "call|1");
    EXPECT_EQ(shape("call a#b"), "call|a#b");
    EXPECT_EQ(shape("call \"# no\""), "call|\"# no\"");
}

TEST(ParseLine, ReadsNamesBeforeValues) {
    EXPECT_EQ(shape("call vid=100 list = [1]"), "call|vid:100|list:[1]");
    EXPECT_EQ(shape("set NAME = 0102"), "set|NAME:0102");
}

TEST(ParseLine, ReadsListsAndSetsWithCommasOrBlanks) {
    EXPECT_EQ(shape("call [1,2 0x3] {4, 5} [] {}"), "call|[1, 2, 0x3]|{4, 5}|[]|{}");
}

TEST(ParseLine, ReadsNestedRecords) {
    EXPECT_EQ(shape("call {flags=8 mac=0102 ports={1,2}}"), "call|{flags=8, mac=0102, ports={1, 2}}");
}

TEST(ParseLine, KeepsTheContentOfText) {
    const Command command = parsed(R"(call "a \"b\" \\ \n c")");
    ASSERT_EQ(command.arguments.size(), 1U);
    EXPECT_EQ(command.arguments[0].value.form, Value::Form::kText);
    EXPECT_EQ(command.arguments[0].value.text, "a \"b\" \\ \n c");
}

TEST(ParseLine, ReportsTheColumnOfAnError) {
    EXPECT_EQ(rejected("call 1, 2").column, 7U);
    EXPECT_EQ(rejected("call {1").column, 8U);
    EXPECT_EQ(rejected("call ]").column, 6U);
}

TEST(ParseLine, ReportsErrors) {
    EXPECT_EQ(rejected("[1]").text, "a line begins with the name of a call or a command: try help");
    EXPECT_EQ(rejected("call {1").text, "a closing '}' is missing");
    EXPECT_EQ(rejected("call [1").text, "a closing ']' is missing");
    EXPECT_EQ(rejected("call [1,").text, "a closing ']' is missing");
    EXPECT_EQ(rejected("call [1,]").text, "an item is missing after the comma");
    EXPECT_EQ(rejected("call [,1]").text, "unexpected ','");
    EXPECT_EQ(rejected("call ]").text, "unexpected ']'");
    EXPECT_EQ(rejected("call [1}").text, "unexpected '}'");
    EXPECT_EQ(rejected("call a=").text, "no value after 'a='");
    EXPECT_EQ(rejected("call =1").text, "unexpected '='");
    EXPECT_EQ(rejected("call \"a\"=1").text, "only a name can precede '='");
    EXPECT_EQ(rejected("call [a=1]").text, "a list cannot hold named items; use { }");
    EXPECT_EQ(rejected("call \"abc").text, "the text has no closing quote");
    EXPECT_EQ(rejected("call \"abc\\").text, R"(unknown escape: only \\, \", \n, \r and \t can follow a backslash)");
    EXPECT_EQ(rejected("call 1, 2").text,
              "commas separate the items inside brackets; arguments are separated by blanks");
}

TEST(ParseLine, RejectsControlCharacters) {
    EXPECT_EQ(rejected(std::string_view("call \0", 6)).column, 6U);
    EXPECT_EQ(rejected("call \x1b[A").text, "the line contains a control character");
}

TEST(ParseLine, LimitsDepthAndLength) {
    const std::string deepest = "call " + std::string(kMaxDepth, '[') + std::string(kMaxDepth, ']');
    EXPECT_EQ(parsed(deepest).arguments.size(), 1U);
    EXPECT_EQ(rejected("call " + std::string(kMaxDepth + 1, '[')).text, "brackets are nested too deeply");
    EXPECT_EQ(parsed(std::string(kMaxLine, 'a')).name.size(), kMaxLine);
    EXPECT_EQ(rejected(std::string(kMaxLine + 1, 'a')).text, "the line is too long");
}

TEST(ParseLine, PlacesEveryErrorInsideTheLine) {
    constexpr int kLines = 50000;
    constexpr std::string_view kAlphabet = "ab1 []{}=,\"\\#\t\x01\xff";
    std::mt19937 random(20);
    std::uniform_int_distribution<size_t> length(0, 24);
    std::uniform_int_distribution<size_t> letter(0, kAlphabet.size() - 1);
    int taken = 0;
    for (int i = 0; i < kLines; ++i) {
        std::string line(length(random), ' ');
        for (char &c : line) {
            c = kAlphabet[letter(random)];
        }
        const auto result = parse_line(line);
        if (const Error *error = std::get_if<Error>(&result)) {
            EXPECT_GE(error->column, 1U) << line;
            EXPECT_LE(error->column, line.size() + 1) << line;
            EXPECT_FALSE(error->text.empty()) << line;
        } else {
            ++taken;
        }
    }
    EXPECT_GT(taken, kLines / 20);
    EXPECT_LT(taken, kLines / 2);
}

TEST(Written, CutsLongValues) {
    EXPECT_EQ(written({Value::Form::kWord, std::string(1000, 'x'), {}}), std::string(40, 'x') + "...");
}

}  // namespace parser_test
}  // namespace adpsh
