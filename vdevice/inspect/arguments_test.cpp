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
    EXPECT_EQ(refusal("version", {"1"}), "The command 'version' has no arguments.");
    EXPECT_EQ(refusal("ports", {"1", "2"}), "The command is used as 'ports [PORTS]'.");
    EXPECT_EQ(refusal("clear", json::array()), "The command is used as 'clear WHAT [PORT]'.");
    EXPECT_EQ(refusal("pull", json::array()), "The command is used as 'pull PORT'.");
    EXPECT_EQ(refusal("pull", {"1", "2"}), "The command is used as 'pull PORT'.");
    EXPECT_EQ(refusal("gpio", {"3"}), "The command is used as 'gpio [PIN LEVEL]'.");
    EXPECT_EQ(refusal("gpio", {"3", "1", "1"}), "The command is used as 'gpio [PIN LEVEL]'.");
    EXPECT_EQ(refusal("gpio", "3"), "The arguments must be a list.");
    const json none = named("gpio", json::array());
    EXPECT_FALSE(none.contains("pin") || none.contains("level"));
}

TEST(Arguments, OfFiltersHaveTheirName) {
    EXPECT_EQ(named("ports", {"1-4"})["port"], "1-4");
    EXPECT_EQ(named("vlans", {"10"})["vlan"], 10);
    EXPECT_EQ(named("clear", {"counters", "3"})["port"], 3);
}

TEST(Options, BecomeMembersAmongTheArguments) {
    const json request = named("counters", {"--nonzero", "1-4"});
    EXPECT_EQ(request["nonzero"], true);
    EXPECT_EQ(request["port"], "1-4");
    EXPECT_EQ(named("macs", {"--vlan", "100", "--port=3,5"})["vlan"], 100);
    EXPECT_EQ(named("macs", {"--vlan", "100", "--port=3,5"})["port"], "3,5");
}

TEST(Options, AreTheSubjectsOwn) {
    EXPECT_EQ(refusal("macs", {"--vlna", "1"}), "The command 'macs' has no option '--vlna', did you mean '--vlan'?");
    EXPECT_EQ(refusal("version", {"--port", "1"}), "The command 'version' has no option '--port'.");
    EXPECT_EQ(refusal("macs", {"--vlan"}), "The option is used as '--vlan VLANS'.");
    EXPECT_EQ(refusal("counters", {"--nonzero=1"}), "The option is used as '--nonzero'.");
    EXPECT_EQ(refusal("macs", {"--"}), "The command 'macs' has no option '--'.");
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
    EXPECT_EQ(&get("ports"), find("ports"));
    EXPECT_EQ(find(""), nullptr);
}

TEST(Subjects, ThatAreUnknownAreToldWithTheClosest) {
    const auto refusal_of = [](const char *name) -> std::string {
        try {
            return get(name).name;
        } catch (const Refusal &refused) {
            return refused.what();
        }
    };
    EXPECT_EQ(refusal_of("portz"), "unknown command 'portz', did you mean 'ports'?");
    EXPECT_EQ(refusal_of("something"), "unknown command 'something'. The command 'help' lists them.");
}

}  // namespace arguments_test
}  // namespace vdevice::inspect
