// Arguments that come as words, and the list of subjects that names them.
#include "vdevice/inspect/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

namespace vdevice::inspect {
namespace arguments_test {

using nlohmann::json;

json named(const char *command, const json &arguments) {
    return with_named_arguments({{"arguments", arguments}}, *find(command));
}

std::string refusal(const char *command, const json &arguments) {
    try {
        return named(command, arguments).dump();
    } catch (const Refusal &refused) {
        return refused.what();
    }
}

TEST(Arguments, BecomeMembersThatTheSubjectNames) {
    const json pin = named("gpio", {"3", "1"});
    EXPECT_EQ(pin["pin"], 3);
    EXPECT_EQ(pin["level"], 1);
    EXPECT_EQ(named("pull", {7})["port"], 7) << "a number may be one already";
}

TEST(Arguments, ThatAreNumbersBecomeOnes) {
    EXPECT_EQ(named("trace", {"-1"})["value"], -1);
    EXPECT_EQ(named("trace", {"0x10"})["value"], 16);
    for (const json &word : {json(""), json("x"), json("3x"), json("1.5"), json("99999999999999999999"),
                             json(std::string("3\0", 2)), json(nullptr), json::array({1})}) {
        EXPECT_EQ(named("trace", json::array({word}))["value"], word);
    }
}

TEST(Arguments, AreTheSubjectsNumber) {
    EXPECT_EQ(refusal("ports", {"1"}), "The command 'ports' has no arguments.");
    EXPECT_EQ(refusal("pull", json::array()), "The command is used as 'pull PORT'.");
    EXPECT_EQ(refusal("pull", {"1", "2"}), "The command is used as 'pull PORT'.");
    EXPECT_EQ(refusal("gpio", {"3"}), "The command is used as 'gpio [PIN LEVEL]'.");
    EXPECT_EQ(refusal("gpio", {"3", "1", "1"}), "The command is used as 'gpio [PIN LEVEL]'.");
    EXPECT_EQ(refusal("gpio", "3"), "The arguments must be a list.");
    const json none = named("gpio", json::array());
    EXPECT_FALSE(none.contains("pin") || none.contains("level"));
}

TEST(Arguments, MayBeMembersFromTheStart) {
    const json request = {{"port", 3}, {"more", "ignored"}};
    EXPECT_EQ(with_named_arguments(request, *find("pull")), request);
}

TEST(Subjects, HaveNamesOfTheirOwnAndAreFoundByThem) {
    std::set<std::string> names;
    for (const Subject *subject : subjects()) {
        EXPECT_TRUE(names.insert(subject->name).second) << subject->name;
        EXPECT_EQ(find(subject->name), subject);
        EXPECT_STRNE(subject->help, "");
    }
    EXPECT_EQ(find("none"), nullptr);
    EXPECT_EQ(find(""), nullptr);
}

}  // namespace arguments_test
}  // namespace vdevice::inspect
