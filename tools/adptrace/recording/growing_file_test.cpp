// A file that grows, and what ends that.
#include "tools/adptrace/recording/growing_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tools/adptrace/recording/recording.h"

namespace growing_file_test {
namespace {

using adptrace::BadRecording;
using adptrace::GrowingFile;
using testing::ElementsAre;

class Growing : public testing::Test {
  protected:
    Growing() { write(""); }
    ~Growing() override { std::filesystem::remove(path_); }

    void write(const std::string &text) const { std::ofstream(path_, std::ios::app) << text; }
    std::vector<std::string> lines(GrowingFile &file) const {
        std::vector<std::string> all;
        file.read([&](std::string_view line) { all.emplace_back(line); });
        return all;
    }
    static std::string reason(const GrowingFile &file) {
        try {
            file.check();
        } catch (const BadRecording &error) {
            return error.what();
        }
        return "it can grow";
    }

    std::filesystem::path path_ = testing::TempDir() + "growing-" + std::to_string(getpid());
};

TEST_F(Growing, GivesEachLineWhenItIsWhole) {
    GrowingFile file(path_);
    EXPECT_THAT(lines(file), ElementsAre());
    write("one\ntwo\nth");
    EXPECT_THAT(lines(file), ElementsAre("one", "two"));
    EXPECT_EQ(file.rest(), "th");
    EXPECT_THAT(lines(file), ElementsAre());
    write("ree\n\n");
    EXPECT_THAT(lines(file), ElementsAre("three", ""));
    EXPECT_EQ(file.rest(), "");
    EXPECT_EQ(reason(file), "it can grow");
}

TEST_F(Growing, GivesWhatIsTooLongToBeRefused) {
    GrowingFile file(path_);
    write(std::string(3 * adptrace::kMaxLine, 'x'));
    const auto taken = lines(file);
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_GT(taken[0].size(), adptrace::kMaxLine);
    EXPECT_LT(taken[0].size(), 2 * adptrace::kMaxLine);
}

TEST_F(Growing, SaysWhyNothingCanFollow) {
    write("one\n");
    GrowingFile file(path_);
    lines(file);
    std::filesystem::resize_file(path_, 1);
    EXPECT_EQ(reason(file), "was truncated while it was followed.");
    std::filesystem::resize_file(path_, 4);
    EXPECT_EQ(reason(file), "it can grow");
    std::filesystem::rename(path_, path_.string() + ".old");
    EXPECT_EQ(reason(file), "is not there any more: No such file or directory.");
    write("another\n");
    EXPECT_EQ(reason(file), "was replaced by another file while it was followed.");
    std::filesystem::remove(path_.string() + ".old");
}

TEST_F(Growing, RefusesWhatCannotBeRead) {
    EXPECT_THROW(GrowingFile{"/nonexistent"}, BadRecording);
    GrowingFile folder("/");
    EXPECT_THROW(lines(folder), BadRecording);
}

}  // namespace
}  // namespace growing_file_test
