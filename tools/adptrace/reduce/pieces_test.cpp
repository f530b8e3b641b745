// Recordings of which parts are left out: what is left must be a recording.
#include "tools/adptrace/reduce/pieces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace pieces_test {

using adptrace::Parts;
using adptrace::Pieces;
using adptrace::Recording;

const std::string kStart =
    R"({"adptrace":1,"byte_order":"big","word_bits":32,"started":"now","command":["agent"]}
{"process":40,"parent":0,"at":0,"program":"/usr/bin/agent","library":"a1b2"}
{"board":[1,2,3],"at":1}
)";
const std::string kFirst = R"({"begin":1,"thread":1,"at":2,"call":"adp_vlan_create","arguments":{"vid":100}}
{"begin":2,"within":1,"thread":1,"at":3,"call":"user_vlan_create","arguments":{"unit":0,"zero":0,"vid":100}}
{"frame":"sent","within":2,"thread":1,"at":4,"interface":"eth0","octets":"00"}
{"end":2,"at":4,"result":0,"outputs":{}}
{"end":1,"at":5,"result":0,"outputs":{}}
)";
const std::string kBoard = R"({"board":[1,2],"at":6}
{"news":"of a later version"}
)";
const std::string kFrame = R"({"frame":"received","thread":2,"at":6,"interface":"eth0","octets":"0102"}
)";
const std::string kDriverCall =
    R"({"begin":3,"thread":2,"at":7,"call":"user_vlan_destroy","arguments":{"unit":0,"zero":0,"vid":5}}
)";
const std::string kLast = R"({"begin":4,"thread":1,"at":7,"call":"adp_vlan_create","arguments":{"vid":101}}
)";
const std::string kExit = R"({"exit":40,"at":9,"signal":11}
)";

TEST(Pieces, AreCallsWithWhatIsInThemAndFrames) {
    const Recording recording(kStart + kFirst + kBoard + kFrame + kDriverCall + kLast + kExit);
    const Pieces pieces(recording);
    ASSERT_EQ(pieces.count(), 4U);
    EXPECT_EQ(pieces.text({0, 1, 2, 3}), kStart + kFirst + kBoard + kFrame + kDriverCall + kLast + kExit);
    EXPECT_EQ(pieces.text({0}), kStart + kFirst + kBoard + kExit);
    EXPECT_EQ(pieces.text({1, 3}), kStart + kBoard + kFrame + kLast + kExit);
    EXPECT_EQ(pieces.text({2}), kStart + kBoard + kDriverCall + kExit);
    EXPECT_EQ(pieces.text({}), kStart + kBoard + kExit);
    EXPECT_EQ(pieces.calls({0, 1, 2}), 2U);
}

TEST(Pieces, OfThreadsThatTakeTurns) {
    const std::string first_begins = kFirst.substr(0, kFirst.find('\n') + 1);
    const std::string first_ends = "{\"end\":1,\"at\":8,\"result\":0,\"outputs\":{}}\n";
    const Recording recording(kStart + first_begins + kDriverCall + first_ends);
    const Pieces pieces(recording);
    EXPECT_EQ(pieces.text({0}), kStart + first_begins + first_ends);
    EXPECT_EQ(pieces.text({1}), kStart + kDriverCall);
}

TEST(Pieces, LeaveOutALineThatIsCut) {
    const Recording recording(kStart + kFirst + R"({"begin":2,"thr)");
    ASSERT_TRUE(recording.is_cut());
    EXPECT_EQ(Pieces(recording).text({0}), kStart + kFirst);
}

TEST(Pieces, OfARecordingWithoutLastNewline) {
    const Recording recording(kStart + kLast.substr(0, kLast.size() - 1));
    EXPECT_EQ(Pieces(recording).text({0}), kStart + kLast);
}

TEST(Pieces, AreRecordingsWhicheverAreLeft) {
    std::string text = kStart;
    std::mt19937 random(9);
    std::vector<int> open;
    for (int number = 1; number < 200; ++number) {
        const std::string at = std::to_string(number);
        const std::string within = open.empty() ? "" : R"(,"within":)" + std::to_string(open.back());
        text += R"({"begin":)" + at + within + R"(,"thread":1,"at":)" + at +
                R"(,"call":"adp_vlan_create","arguments":{"vid":1}})" + "\n";
        open.push_back(number);
        while (!open.empty() && random() % 2 == 0) {
            text +=
                R"({"end":)" + std::to_string(open.back()) + R"(,"at":)" + at + R"(,"result":0,"outputs":{}})" + "\n";
            open.pop_back();
        }
    }
    const Recording recording(text);
    const Pieces pieces(recording);
    for (int n = 0; n < 50; ++n) {
        Parts parts;
        for (size_t part = 0; part < pieces.count(); ++part) {
            if (random() % 2 == 0) {
                parts.push_back(part);
            }
        }
        const Recording rest(pieces.text(parts));
        EXPECT_EQ(Pieces(rest).count(), parts.size());
    }
}

}  // namespace pieces_test
