// Command lines of `show` and `stat`, right and wrong.
#include "tools/adptrace/show/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/adptrace/command.h"

namespace options_test {
namespace {

using adptrace::Options;
using Words = std::vector<std::string>;

std::string reason(const Words &words, Options (*parse)(std::span<const std::string>) = adptrace::show_options) {
    try {
        parse(words);
    } catch (const adptrace::Refusal &refusal) {
        return refusal.what();
    }
    return "accepted";
}

TEST(Options, AreReadInBothForms) {
    for (const Words &words :
         {Words{"--calls=a*", "file", "--thread=2", "--since=1.5", "--until=2", "--calls=b"},
          Words{"--calls", "a*", "--thread", "2", "--since", "1.5", "--until", "2", "--calls", "b", "file"}}) {
        const Options options = adptrace::show_options(words);
        EXPECT_EQ(options.file, "file");
        EXPECT_THAT(options.show.filter.patterns, testing::ElementsAre("a*", "b"));
        EXPECT_EQ(options.show.filter.thread, 2U);
        EXPECT_EQ(options.show.filter.since, 1'500'000'000);
        EXPECT_EQ(options.show.filter.until, 2'000'000'000);
    }
}

TEST(Options, SetWhatTheySay) {
    const Options show = adptrace::show_options(Words{"-", "--failed", "--library", "--driver", "--process=7", "--tree",
                                                      "--frames", "--full", "--timeline=x.svg"});
    EXPECT_EQ(show.file, "-");
    EXPECT_TRUE(show.show.filter.is_failed && show.show.filter.is_library && show.show.filter.is_driver);
    EXPECT_EQ(show.show.filter.process, 7);
    EXPECT_TRUE(show.show.is_tree && show.show.has_frames);
    EXPECT_EQ(show.show.style.length, adptrace::Length::kFull);
    EXPECT_EQ(show.timeline, "x.svg");
    const Options stat = adptrace::stat_options(Words{"x", "--sort=errors", "--json"});
    EXPECT_EQ(stat.order, adptrace::Order::kErrors);
    EXPECT_TRUE(stat.is_json);
}

TEST(Options, OfTheHelpAreKnown) {
    const auto check = [](std::string_view help, Options (*parse)(std::span<const std::string>)) {
        size_t count = 0;
        for (size_t place = help.find("--"); place != std::string_view::npos; place = help.find("\n      --", place)) {
            place = help.find("--", place);
            const size_t length = help.find_first_of(" =", place) - place;
            const bool has_value = help[place + length] == '=';
            EXPECT_NE(reason({std::string(help.substr(place, length)) + (has_value ? "=1" : ""), "file"}, parse)
                          .find(help.substr(place, length) == "--sort" ? "--sort takes" : "accepted"),
                      std::string::npos)
                << help.substr(place, length);
            ++count;
        }
        return count;
    };
    EXPECT_EQ(check(adptrace::kShowHelp, adptrace::show_options), 15U);
    EXPECT_EQ(check(adptrace::kStatHelp, adptrace::stat_options), 10U);
}

TEST(Options, AreRefusedWithASentence) {
    EXPECT_EQ(reason({}), "it needs the FILE of a recording, or - for standard input.");
    EXPECT_EQ(reason({"a", "b"}), "it takes one FILE, not 'a' and 'b'.");
    EXPECT_EQ(reason({"a", "--tre"}), "there is no option --tre; did you mean '--tree'?; --help lists them.");
    EXPECT_EQ(reason({"a", "--last=1"}, adptrace::stat_options).substr(0, 26), "there is no option --last;");
    EXPECT_EQ(reason({"a", "--last=100001"}), "'100001' is no number from 1 to 100000.");
    EXPECT_EQ(reason({"a", "--calls"}), "--calls needs PATTERN.");
    EXPECT_EQ(reason({"a", "--tree=1"}), "--tree takes no value.");
    EXPECT_EQ(reason({"a", "--thread=0"}), "'0' is no number from 1 on.");
    EXPECT_EQ(reason({"a", "--thread=4294967296"}), "'4294967296' is no number from 1 on.");
    for (const char *const time : {"-1", "x", "1s", "nan", "inf", "1e300", ""}) {
        EXPECT_EQ(reason({"a", std::string("--since=") + time}),
                  std::string("'") + time + "' is no time: it takes seconds, such as 1.5.");
    }
    EXPECT_EQ(reason({"a", "--sort=size"}, adptrace::stat_options),
              "--sort takes time, count, errors or name, not 'size'.");
}

}  // namespace
}  // namespace options_test
