// Saved groups as text and back.
#include "switchd/groups/saved.h"

#include <gtest/gtest.h>

namespace switchd {
namespace saved_test {

SavedGroups example() {
    SavedGroups saved;
    saved.groups = {1, 8};
    saved.members[3] = {1, {{0x8000, {2, 3, 4, 5, 6, 255}}, 7, 0x8001, 65535, 0x3F}};
    saved.members[26] = {8, {}};
    return saved;
}

TEST(SavedGroups, AreLinesOfWords) {
    EXPECT_EQ(text_of(example()),
              "group 1\ngroup 8\n"
              "member 3 1 32768 2 3 4 5 6 255 7 32769 65535 63\n"
              "member 26 8 0 0 0 0 0 0 0 0 0 0 0\n");
    EXPECT_EQ(text_of({}), "");
}

TEST(SavedGroups, AreReadAsWritten) {
    EXPECT_EQ(saved_of(text_of(example())), example());
    EXPECT_EQ(saved_of(""), SavedGroups{});
}

TEST(SavedGroups, AnyMistakeMakesThemWorthless) {
    const std::string good = text_of(example());
    for (const char *line :
         {"group", "group 0", "group 9", "group x", "group 1 1", "group -1", "groups 1", "\n", " ",
          "member 3 1 32768 2 3 4 5 6 255 7 32769 65535", "member 0 1 0 0 0 0 0 0 0 0 0 0 0",
          "member 27 1 0 0 0 0 0 0 0 0 0 0 0", "member 3 9 0 0 0 0 0 0 0 0 0 0 0", "member 3 1 0 0 0 0 0 0 256 0 0 0 0",
          "member 3 1 0 0 0 0 0 0 0 0 0 0 256", "member 3 1 65536 0 0 0 0 0 0 0 0 0 0",
          "member 3 1 0 0 0 0 0 0 0 0 0 0 1x", "member 3 1 0 0 0 0 0 0 0 0 0 0 99999999999999999999"}) {
        EXPECT_EQ(saved_of(good + line + "\n"), std::nullopt) << line;
    }
    EXPECT_EQ(saved_of(good.substr(0, good.size() - 3)), std::nullopt) << "cut";
    EXPECT_EQ(saved_of(std::string("group 1\n\0", 9)), std::nullopt);
}

}  // namespace saved_test
}  // namespace switchd
