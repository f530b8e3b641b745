// Fates are by lot, each question's by its own, and the same on every machine.
#include "vdevice/cable/fates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace vdevice::cable {
namespace fates_test {

constexpr uint64_t kFrames = 100'000;
constexpr Question kQuestions[] = {Question::kLoss, Question::kDuplicate, Question::kCorrupt, Question::kBit,
                                   Question::kJitter};

std::vector<uint64_t> first_lost(uint64_t seed, int port, Direction direction) {
    const Fates fates{seed, port, direction};
    std::vector<uint64_t> lost;
    for (uint64_t frame = 0; frame < 200; ++frame) {
        if (fates.happens(50'000, Question::kLoss, frame)) {
            lost.push_back(frame);
        }
    }
    return lost;
}

// Computed by another program from the definition of SplitMix64. A seed that people have written down stays what it
// was.
TEST(Fates, AreFrozen) {
    const Fates fates{7, 3, Direction::kIn};
    EXPECT_EQ(fates.draw(Question::kLoss, 0), 15138820506272943158U);
    EXPECT_EQ(fates.draw(Question::kJitter, 1, 1), 13998468614705992839U);
    EXPECT_EQ(fates.draw(Question::kBit, 1ULL << 40), 2967834130062863171U);
    EXPECT_EQ(first_lost(7, 3, Direction::kIn), (std::vector<uint64_t>{36, 65, 66, 89, 138, 152, 178, 179, 197}));
    EXPECT_EQ(first_lost(7, 3, Direction::kOut),
              (std::vector<uint64_t>{14, 23, 24, 29, 50, 64, 76, 89, 103, 148, 155, 181, 187}));
    EXPECT_EQ(first_lost(8, 3, Direction::kIn),
              (std::vector<uint64_t>{21, 45, 51, 64, 66, 89, 135, 145, 186, 188, 190}));
    EXPECT_EQ(first_lost(7, 4, Direction::kIn),
              (std::vector<uint64_t>{18, 26, 29, 45, 70, 98, 141, 153, 159, 164, 179, 190}));
}

/** How often two questions have the same answer, when each is yes for half of the frames. */
void expect_independent(const Fates &one, Question first, const Fates &other, Question second, unsigned copy) {
    uint64_t same = 0;
    for (uint64_t frame = 0; frame < kFrames; ++frame) {
        same += one.happens(500'000, first, frame) == other.happens(500'000, second, frame, copy) ? 1U : 0U;
    }
    const double sigma = std::sqrt(kFrames * 0.25);
    EXPECT_NEAR(static_cast<double>(same), kFrames * 0.5, 4 * sigma);
}

TEST(Fates, AnswerEachQuestionByItself) {
    const Fates fates{1, 1, Direction::kIn};
    for (const Question first : kQuestions) {
        for (const Question second : kQuestions) {
            if (first != second) {
                expect_independent(fates, first, fates, second, 0);
            }
        }
        expect_independent(fates, first, fates, first, 1);
        expect_independent(fates, first, Fates{1, 1, Direction::kOut}, first, 0);
        expect_independent(fates, first, Fates{1, 2, Direction::kIn}, first, 0);
        expect_independent(fates, first, Fates{2, 1, Direction::kIn}, first, 0);
    }
}

TEST(Fates, HappenToTheShare) {
    const Fates fates{1, 1, Direction::kIn};
    for (const uint64_t share : {0U, 1000U, 50'000U, 999'000U, 1'000'000U}) {
        uint64_t count = 0;
        for (uint64_t frame = 0; frame < kFrames; ++frame) {
            count += fates.happens(share, Question::kLoss, frame) ? 1U : 0U;
        }
        const double part = static_cast<double>(share) / 1e6;
        const double sigma = std::sqrt(kFrames * part * (1 - part));
        EXPECT_NEAR(static_cast<double>(count), kFrames * part, 4 * sigma) << share;
    }
}

}  // namespace fates_test
}  // namespace vdevice::cable
