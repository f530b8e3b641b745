// Command lines, and what is wrong with them.
#include "tools/adptrace/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/adptrace/command.h"

namespace options_test {

using adptrace::Option;
using adptrace::read_options;
using adptrace::Refusal;
using testing::ElementsAre;

class CommandLine : public testing::Test {
  protected:
    std::vector<std::string> read(const std::vector<std::string> &words) {
        const Option options[] = {{"--all", "", [this](const std::string &) { is_all_ = true; }},
                                  {"--output", "FILE", [this](const std::string &word) { output_ = word; }, "-o"}};
        return read_options(words, options);
    }
    std::string reason(const std::vector<std::string> &words) {
        try {
            read(words);
        } catch (const Refusal &refusal) {
            return refusal.what();
        }
        return "accepted";
    }

    bool is_all_ = false;
    std::string output_;
};

TEST_F(CommandLine, HasOptionsAmongOtherWords) {
    EXPECT_THAT(read({"a", "--output=x=y", "-", "--all", "b"}), ElementsAre("a", "-", "b"));
    EXPECT_TRUE(is_all_);
    EXPECT_EQ(output_, "x=y");
}

TEST_F(CommandLine, HasValuesAsTheNextWord) {
    EXPECT_THAT(read({"--output", "--all"}), ElementsAre());
    EXPECT_EQ(output_, "--all");
    EXPECT_THAT(read({"-o", "x", "a=b"}), ElementsAre("a=b"));
    EXPECT_EQ(output_, "x");
    EXPECT_FALSE(is_all_);
}

TEST_F(CommandLine, IsRefusedWithASentence) {
    EXPECT_EQ(reason({"--outptu=a"}), "there is no option --outptu; did you mean '--output'?; --help lists them.");
    EXPECT_EQ(reason({"--all=1"}), "--all takes no value.");
    EXPECT_EQ(reason({"a", "-o"}), "--output needs FILE.");
    EXPECT_EQ(reason({"-x"}), "there is no option -x; --help lists them.");
    EXPECT_EQ(reason({"-o=a"}), "there is no option -o=a; --help lists them.");
}

}  // namespace options_test
