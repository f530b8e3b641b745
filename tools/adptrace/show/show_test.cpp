// Recordings as text: the samples of each version, filters, threads, and texts that are hostile.
#include "tools/adptrace/show/show.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "tools/adptrace/recording/testing/lines.h"
#include "tools/adptrace/show/stat.h"

namespace show_test {
namespace {

using adptrace::Recording;
using adptrace::ShowOptions;
using adptrace::testing::begin;
using adptrace::testing::end;
using adptrace::testing::kStart;

std::string shown(const Recording &recording, const ShowOptions &options = {}) {
    std::string text;
    adptrace::show(recording, options, [&text](const std::string &line) { text += line; });
    return text;
}

/** What is shown of calls alone. */
std::string calls_of(const std::string &text, ShowOptions options = {}) {
    options.filter.patterns.emplace_back("*");
    return shown(Recording(kStart + text), options);
}

std::string contents_of(const std::filesystem::path &file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

TEST(Show, ReadsTheSamplesOfEachVersion) {
    size_t samples = 0;
    for (const auto &entry : std::filesystem::directory_iterator(ADPTRACE_SAMPLES)) {
        const std::filesystem::path &file = entry.path();
        if (file.extension() != ".adptrace") {
            continue;
        }
        ++samples;
        const Recording recording = Recording::of_file(file);
        const auto expected = [&file](const char *extension) {
            return contents_of(std::filesystem::path(file).replace_extension(extension));
        };
        EXPECT_EQ(shown(recording), expected(".show"));
        ShowOptions tree;
        tree.is_tree = true;
        tree.has_frames = true;
        EXPECT_EQ(shown(recording, tree), expected(".tree"));
        EXPECT_EQ(stat_text(recording, {}, adptrace::Order::kTime), expected(".stat"));
        EXPECT_EQ(stat_json(recording, {}, adptrace::Order::kName), expected(".stat.json"));
    }
    EXPECT_EQ(samples, 3U);
}

/** The calls of a sample, and each time and duration as `#`. */
std::string without_times(const std::string &name) {
    const Recording recording = Recording::of_file(std::string(ADPTRACE_SAMPLES) + "/" + name);
    ShowOptions options;
    options.filter.patterns = {"*"};
    const std::string text = shown(recording, options);
    return std::regex_replace(text, std::regex(R"( +\d+\.\d+ \[|  \([0-9.]+ [mun]?s\)\n)"), "#");
}

TEST(Show, ShowsTheSameForHostAndTarget) {
    const std::string host = without_times("version-1-host.adptrace");
    EXPECT_EQ(std::count(host.begin(), host.end(), '#'), 62) << host;
    EXPECT_EQ(host, without_times("version-1-target.adptrace"));
}

/** Two threads; the driver call of the first comes after a call of the second has begun. */
const std::string kThreads = begin({1, 0, "adp_vlan_create", "{}", 10, 1, 0}) +
                             begin({2, 0, "adp_vlan_destroy", "{}", 20, 2, 0}) +
                             begin({3, 1, "user_vlan_create", "{}", 30, 1, 0}) + end({3, "-11", 40, "{}", 0}) +
                             begin({4, 2, "user_vlan_destroy", "{}", 50, 2, 0}) + end({4, "0", 60, "{}", 0}) +
                             end({1, "102", 1'000'000'070, "{}", 0}) + end({2, "0", 20'000'000'080, "{}", 0});

TEST(Show, ListsCallsInTheOrderOfTheirBeginning) {
    EXPECT_EQ(calls_of(kThreads),
              "    0.000000 [1] adp_vlan_create() = 102 (ADP_E_DRIVER)  (1.0 s)\n"
              "    0.000000 [2] adp_vlan_destroy() = 0  (20 s)\n"
              "    0.000000 [1]   user_vlan_create() = -11 (vlan_exists)  (10 ns)\n"
              "    0.000000 [2]   user_vlan_destroy() = 0  (10 ns)\n");
}

TEST(Show, GathersInATreeWhatIsWithinACall) {
    ShowOptions options;
    options.is_tree = true;
    EXPECT_EQ(calls_of(kThreads, options),
              "    0.000000 [1] adp_vlan_create() = 102 (ADP_E_DRIVER)  (1.0 s)\n"
              "    0.000000 [1] `- user_vlan_create() = -11 (vlan_exists)  (10 ns)\n"
              "    0.000000 [2] adp_vlan_destroy() = 0  (20 s)\n"
              "    0.000000 [2] `- user_vlan_destroy() = 0  (10 ns)\n");
}

TEST(Show, DrawsTheBranchesOfATree) {
    ShowOptions options;
    options.is_tree = true;
    const std::string text = begin({1}) + begin({2, 1}) + begin({3, 2}) + end({3}) + end({2, "0", 30, "{}", 0}) +
                             begin({4, 1, "adp_vlan_create", "{}", 30, 1, 0}) +
                             begin({5, 4, "adp_vlan_create", "{}", 30, 1, 0});
    EXPECT_EQ(calls_of(text, options),
              "    0.000000 [1] adp_vlan_create(vid=100) = ?  (did not return)\n"
              "    0.000000 [1] |- adp_vlan_create(vid=100) = 0  (20 ns)\n"
              "    0.000000 [1] |  `- adp_vlan_create(vid=100) = 0  (10 ns)\n"
              "    0.000000 [1] `- adp_vlan_create() = ?  (did not return)\n"
              "    0.000000 [1]    `- adp_vlan_create() = ?  (did not return)\n");
}

/** The names of the calls that are shown, each with its indentation. */
std::vector<std::string> names(const ShowOptions &options, const std::string &text = kThreads) {
    std::istringstream lines(shown(Recording(kStart + text), options));
    std::vector<std::string> result;
    for (std::string line; std::getline(lines, line);) {
        const size_t start = line.find("] ");
        if (start != std::string::npos && line.find('(') != std::string::npos) {
            result.push_back(line.substr(start + 2, line.find('(') - start - 2));
        }
    }
    return result;
}

TEST(Show, ShowsChosenCallsAlone) {
    using testing::ElementsAre;
    ShowOptions options;
    options.filter.patterns = {"*_destroy", "nothing"};
    EXPECT_THAT(names(options), ElementsAre("adp_vlan_destroy", "  user_vlan_destroy"));
    options.filter = {};
    options.filter.is_failed = true;
    EXPECT_THAT(names(options), ElementsAre("adp_vlan_create", "  user_vlan_create"));
    options.filter = {};
    options.filter.thread = 2;
    EXPECT_THAT(names(options), ElementsAre("adp_vlan_destroy", "  user_vlan_destroy"));
    options.filter = {};
    options.filter.is_driver = true;
    EXPECT_THAT(names(options), ElementsAre("user_vlan_create", "user_vlan_destroy"));
    options.filter = {};
    options.filter.is_library = true;
    EXPECT_THAT(names(options), ElementsAre("adp_vlan_create", "adp_vlan_destroy"));
    options.filter.is_driver = true;
    EXPECT_EQ(names(options).size(), 4U) << "both are all";
    options.filter = {};
    options.filter.since = 20;
    options.filter.until = 30;
    EXPECT_THAT(names(options), ElementsAre("adp_vlan_destroy", "user_vlan_create"));
    options.filter = {};
    options.filter.process = 41;
    EXPECT_THAT(names(options), ElementsAre());
}

TEST(Show, ShowsInATreeTheCallsAroundAChosenOne) {
    ShowOptions options;
    options.is_tree = true;
    options.filter.patterns = {"user_vlan_create"};
    EXPECT_THAT(names(options), testing::ElementsAre("adp_vlan_create", "`- user_vlan_create"));
}

TEST(Show, NamesTheProcessWhereThereAreSeveral) {
    const std::string text = R"({"process":41,"parent":40,"at":5000,"program":"/bin/sh","library":null})"
                             "\n" +
                             begin({1, 0, "adp_vlan_create", "{}", 6000, 1, 41}) +
                             R"({"exit":41,"at":7000,"status":3})"
                             "\n"
                             R"({"exit":40,"at":8000,"signal":35})"
                             "\n"
                             R"({"begin":7,"th)";
    EXPECT_EQ(shown(Recording(kStart + text)),
              "--- agent -v, started 2024-05-06T07:08:09Z, 32 bits, big-endian\n"
              "    0.000000 --- process 40 runs /usr/bin/agent, libadp a1b2\n"
              "    0.000005 --- process 41, forked from 40, runs /bin/sh\n"
              "    0.000006 [41/1] adp_vlan_create() = ?  (did not return)\n"
              "    0.000007 +++ process 41 exited with status 3\n"
              "    0.000008 +++ process 40 was ended by signal 35\n"
              "--- the recording is cut: its last line is not whole\n");
}

TEST(Show, EscapesWhatATerminalWouldObey) {
    const std::string hostile = R"({"word":"\u001b]0;x\u0007\"\u202e","\u001b[2J":[{"\n":"\r"}]})";
    const std::string text = begin({1, 0, "Log_logging_func", hostile, 10, 1, 0}) +
                             R"({"frame":"sent","thread":1,"at":20,"interface":"\u001bc","octets":""})"
                             "\n"
                             R"({"process":41,"parent":0,"at":5,"program":"\u001bc","library":"\u001bc"})"
                             "\n" +
                             end({1, R"("\u001b")", 30, hostile, 0});
    ShowOptions options;
    options.has_frames = true;
    for (const bool is_tree : {false, true}) {
        options.is_tree = is_tree;
        const std::string all = shown(Recording(kStart + text), options);
        EXPECT_EQ(all.find_first_of("\x1b\x07\r"), std::string::npos) << all;
        EXPECT_EQ(all.find("\u202e"), std::string::npos);
        EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 5);
        EXPECT_NE(all.find(R"(word="\x1b]0;x\x07\")"), std::string::npos) << all;
    }
}

TEST(Show, ShowsWhatACallReadAlsoIfItWasThereBefore) {
    const auto line = [](const char *arguments, const char *result, const char *outputs) {
        const std::string text = calls_of(begin({1, 0, "user_port_link_status_get", arguments, 10, 1, 0}) +
                                          end({1, result, 20, outputs, 0}));
        return text.substr(text.find(") ="));
    };
    EXPECT_EQ(line("{}", "0", R"({"status":1})"), ") = 0 {status=1}  (10 ns)\n");
    EXPECT_EQ(line("{}", "0", "{}"), ") = 0 {status=0}  (10 ns)\n") << "it has read a zero";
    EXPECT_EQ(line(R"({"status":7})", "0", "{}"), ") = 0 {status=7}  (10 ns)\n");
    EXPECT_EQ(line(R"({"status":null})", "0", "{}"), ") = 0  (10 ns)\n");
    EXPECT_EQ(line(R"({"status":7})", "-11", "{}"), ") = -11 (vlan_exists)  (10 ns)\n") << "it has read nothing";
}

TEST(Show, ShowsZerosByTheirType) {
    const auto outputs = [](const char *call) {
        const std::string text = calls_of(begin({1, 0, call, "{}", 10, 1, 0}) + end({}));
        return text.substr(text.find(") =") + 6);
    };
    EXPECT_EQ(outputs("adp_intf_stat_get"), "{value=0}  (10 ns)\n");
    EXPECT_EQ(outputs("GET_AGG_GROUP"), "{count=0, members=[0, 0, 0, 0, 0, 0, 0, 0]}  (10 ns)\n");
    EXPECT_EQ(outputs("User_mcast_port_get"), "{entry={}}  (10 ns)\n");
    EXPECT_EQ(outputs("adp_receive_frame"), "{out_frame=null, out_length=0, out_flag=0, out_intf=0}  (10 ns)\n");
}

TEST(Show, ColoursTheResultsOfFailuresOnly) {
    ShowOptions options;
    options.style.has_colours = true;
    EXPECT_EQ(calls_of(begin({}) + end({}), options).find('\x1b'), std::string::npos);
    EXPECT_NE(calls_of(begin({}) + end({1, "102", 20, "{}", 0}), options).find("\x1b[31m102 (ADP_E_DRIVER)\x1b[0m"),
              std::string::npos);
}

TEST(Show, IndentsNoFurtherThanSomeLimit) {
    std::string text = begin({});
    for (uint64_t number = 2; number <= adptrace::kMaxDepth; ++number) {
        text += begin({number, number - 1, "adp_vlan_create", "{}", 10, 1, 0});
    }
    std::istringstream lines(calls_of(text));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LT(line.size(), 320U);
    }
}

}  // namespace
}  // namespace show_test
