// Recordings shown in parts: the same calls as in the whole, as text and as JSON.
#include "tools/adptrace/show/show_parts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/adptrace/recording/testing/lines.h"

namespace show_parts_test {
namespace {

using adptrace::Options;
using adptrace::testing::begin;
using adptrace::testing::end;
using adptrace::testing::kStart;
using nlohmann::json;
using testing::ElementsAre;

constexpr const char *kSamples[] = {"version-1-every-kind", "version-1-host", "version-1-target"};

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> shown(const Options &options, const adptrace::Parts::Limits &limits = {}) {
    std::string text;
    adptrace::show_parts(options, {[&](const std::string &line) { text += line; }, [] {}}, limits);
    return lines_of(text);
}

Options options_of(const std::string &sample) {
    Options options;
    options.file = std::string(ADPTRACE_SAMPLES) + "/" + sample + ".adptrace";
    return options;
}

class ShowParts : public testing::Test {
  protected:
    ~ShowParts() override { std::filesystem::remove(path_); }

    Options options(const std::string &text) const {
        std::ofstream(path_) << kStart << text;
        Options options;
        options.file = path_;
        return options;
    }
    /** The texts of the calls. */
    static std::vector<std::string> texts(Options options) {
        options.is_json = true;
        std::vector<std::string> all;
        for (const std::string &line : shown(options)) {
            all.push_back(json::parse(line)["text"]);
        }
        return all;
    }

    std::filesystem::path path_ = testing::TempDir() + "parts-" + std::to_string(getpid());
};

const std::string kThree = begin({1}) + end({1, "102", 30, "{}", 0}) +
                           begin({2, 0, "adp_vlan_destroy", "{}", 40, 1, 0}) +
                           begin({3, 2, "user_vlan_destroy", "{}", 50, 1, 0}) + end({3, "-12", 60, "{}", 0}) +
                           end({2, "0", 1'070, "{}", 0}) + begin({4, 0, "adp_mac_get", "{}", 2'000, 1, 0});

/** Threads are shown with their process as soon as there are several. */
std::vector<std::string> sorted_without_process(std::vector<std::string> lines, const std::string &process) {
    for (std::string &line : lines) {
        if (const size_t place = line.find("[" + process + "/"); place != std::string::npos) {
            line.erase(place + 1, process.size() + 1);
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

TEST_F(ShowParts, TellsWhatTheWholeTells) {
    for (const char *sample : kSamples) {
        Options options = options_of(sample);
        options.show.is_tree = true;
        options.show.has_frames = true;
        std::ostringstream whole;
        whole << std::ifstream(std::filesystem::path(options.file).replace_extension(".tree")).rdbuf();
        EXPECT_EQ(sorted_without_process(shown(options), "412"), sorted_without_process(lines_of(whole.str()), "412"));
    }
}

size_t count_of(const json &calls) {
    size_t count = calls.size();
    for (const json &call : calls) {
        count += count_of(call["within"]);
    }
    return count;
}

TEST_F(ShowParts, HasEveryCallInJson) {
    for (const char *sample : kSamples) {
        Options options = options_of(sample);
        options.is_json = true;
        json calls = json::array();
        for (const std::string &line : shown(options)) {
            calls.push_back(json::parse(line));
        }
        EXPECT_EQ(count_of(calls), adptrace::Recording::of_file(options.file).calls().size());
    }
}

TEST_F(ShowParts, SaysInJsonWhatACallWas) {
    Options options = this->options(kThree);
    options.is_json = true;
    const auto lines = shown(options);
    ASSERT_EQ(lines.size(), 3U);
    const json first = {{"at", 1e-8},
                        {"process", 40},
                        {"thread", 1},
                        {"failed", true},
                        {"microseconds", 0.02},
                        {"text", "adp_vlan_create(vid=100) = 102 (ADP_E_DRIVER)"},
                        {"within", json::array()}};
    EXPECT_EQ(json::parse(lines[0]), first);
    const json second = json::parse(lines[1]);
    EXPECT_EQ(second["failed"], false);
    EXPECT_EQ(second["microseconds"], 1.03);
    EXPECT_EQ(second["within"][0]["text"], "user_vlan_destroy() = -12 (vlan_missing)");
    EXPECT_EQ(second["within"][0]["failed"], true);
    const json third = json::parse(lines[2]);
    EXPECT_EQ(third["text"], "adp_mac_get() = ?  (did not return)");
    EXPECT_EQ(third["microseconds"], nullptr);
    EXPECT_EQ(third["failed"], false);
}

TEST_F(ShowParts, ShowsTheNewestCalls) {
    Options options = this->options(kThree);
    options.last = 2;
    EXPECT_THAT(texts(options), ElementsAre("adp_vlan_destroy() = 0", "adp_mac_get() = ?  (did not return)"));
    options.last = 100;
    EXPECT_EQ(texts(options).size(), 3U);
    options.last = 1;
    EXPECT_THAT(shown(options), ElementsAre("--- agent -v, started 2024-05-06T07:08:09Z, 32 bits, big-endian",
                                            "    0.000002 [1] adp_mac_get() = ?  (did not return)"));
}

TEST_F(ShowParts, ShowsChosenCalls) {
    Options options = this->options(kThree);
    options.show.filter.is_failed = true;
    EXPECT_THAT(texts(options), ElementsAre("adp_vlan_create(vid=100) = 102 (ADP_E_DRIVER)", "adp_vlan_destroy() = 0"));
    EXPECT_THAT(shown(options), ElementsAre("    0.000000 [1] adp_vlan_create(vid=100) = 102 (ADP_E_DRIVER)  (20 ns)",
                                            "    0.000000 [1] user_vlan_destroy() = -12 (vlan_missing)  (10 ns)"));
    options.show.filter.patterns = {"nothing"};
    EXPECT_THAT(shown(options), ElementsAre("--- no call is chosen"));
    EXPECT_THAT(texts(options), ElementsAre());
}

TEST_F(ShowParts, EndsWithTheRecordedProgram) {
    Options options = this->options(kThree + R"({"exit":40,"at":3000,"status":3})" + "\n");
    options.is_followed = true;
    const auto lines = shown(options);
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[5], "    0.000002 [1] adp_mac_get() = ?  (did not return)");
    EXPECT_EQ(lines[6], "    0.000003 +++ process 40 exited with status 3");
}

TEST_F(ShowParts, SaysThatARecordingIsCut) {
    EXPECT_EQ(shown(options(kThree + R"({"end":4,"at")")).back(),
              "--- the recording is cut: its last line is not whole");
    const std::string whole = end({4, "0", 2'100, "{}", 0});
    EXPECT_EQ(texts(options(kThree + whole.substr(0, whole.size() - 1))).back(), "adp_mac_get() = 0");
}

TEST_F(ShowParts, SaysWhatIsLeftOut) {
    std::string text = begin({1});
    for (uint64_t number = 2; number < 12; ++number) {
        text += begin({number, 1, "user_vlan_create", R"({"x":")" + std::string(5000, 'x') + "\"}", 10, 1, 0});
        text += end({number, "0", 10, "{}", 0});
    }
    Options options = this->options(text + end({1}));
    EXPECT_EQ(shown(options, {.in_call = 40000}).back(), "--- 3 more calls within it are left out");
    options.is_json = true;
    EXPECT_EQ(json::parse(shown(options, {.in_call = 40000}).at(0))["left_out"], 3);
}

TEST_F(ShowParts, RefusesWithTheNameAndTheLine) {
    const auto reason = [](const Options &options) -> std::string {
        try {
            shown(options);
        } catch (const adptrace::BadRecording &error) {
            return error.what();
        }
        return "shown";
    };
    EXPECT_EQ(reason(options(kThree + "x\n" + end({4}))), path_.string() + ": line 10 is no JSON object.");
    EXPECT_EQ(reason(options(begin({1, 0, "adp_mac_get", "{}", 10, 1, 0}) +
                             begin({2, 1, "adp_mac_get", "{}", 9, 1, 0}) + end({1}))),
              path_.string() + ": line 4 is earlier than a line of the same thread before it.");
    Options empty = options("");
    std::ofstream(path_, std::ios::trunc).flush();
    EXPECT_EQ(reason(empty), path_.string() + ": the recording is empty.");
}

}  // namespace
}  // namespace show_parts_test
