// Alignments of random sequences: every element once, pairs that are equal, and no more differences than were made.
#include "tools/adptrace/compare/alignment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace alignment_test {

using adptrace::align;
using adptrace::Alignment;
using adptrace::Element;
using adptrace::Step;

constexpr size_t kMost = 1000;
using Sequence = std::vector<Element>;

class Alignments : public testing::Test {
  protected:
    size_t random(size_t below) { return std::uniform_int_distribution<size_t>(0, below - 1)(random_); }

    Sequence sequence(size_t size, size_t keys) {
        Sequence made(size);
        for (Element &element : made) {
            const size_t key = random(keys);
            element = {key, key % 5};
        }
        return made;
    }

    std::mt19937 random_{7};
};

/** Every element must be there once and in its order, pairs with one name. */
void check(const Alignment &alignment, const Sequence &a, const Sequence &b) {
    size_t next_a = 0;
    size_t next_b = 0;
    for (const Step &step : alignment.steps) {
        ASSERT_TRUE(step.a != Step::kAbsent || step.b != Step::kAbsent);
        if (step.a != Step::kAbsent) {
            ASSERT_EQ(step.a, next_a++);
        }
        if (step.b != Step::kAbsent) {
            ASSERT_EQ(step.b, next_b++);
        }
        if (step.is_pair()) {
            ASSERT_EQ(a[step.a].name, b[step.b].name);
        }
    }
    ASSERT_EQ(next_a, a.size());
    ASSERT_EQ(next_b, b.size());
}

size_t equal_pairs(const Alignment &alignment, const Sequence &a, const Sequence &b) {
    return static_cast<size_t>(std::count_if(alignment.steps.begin(), alignment.steps.end(), [&](const Step &step) {
        return step.is_pair() && a[step.a].key == b[step.b].key;
    }));
}

/** The length of the longest common subsequence, by its definition. */
size_t most_equal_pairs(const Sequence &a, const Sequence &b) {
    std::vector<std::vector<size_t>> table(a.size() + 1, std::vector<size_t>(b.size() + 1, 0));
    for (size_t x = 1; x <= a.size(); ++x) {
        for (size_t y = 1; y <= b.size(); ++y) {
            table[x][y] =
                a[x - 1].key == b[y - 1].key ? table[x - 1][y - 1] + 1 : std::max(table[x - 1][y], table[x][y - 1]);
        }
    }
    return table[a.size()][b.size()];
}

TEST_F(Alignments, OfASequenceWithItselfHaveNoDifference) {
    for (size_t size = 0; size < 50; ++size) {
        const Sequence a = sequence(size, 1 + random(20));
        const Alignment alignment = align(a, a, kMost);
        check(alignment, a, a);
        EXPECT_EQ(equal_pairs(alignment, a, a), size);
        EXPECT_EQ(alignment.steps.size(), size);
    }
}

TEST_F(Alignments, HaveAsManyEqualPairsAsThereCanBe) {
    for (int n = 0; n < 300; ++n) {
        const size_t keys = 1 + random(12);
        const Sequence a = sequence(random(40), keys);
        const Sequence b = sequence(random(40), keys);
        const Alignment alignment = align(a, b, kMost);
        check(alignment, a, b);
        EXPECT_EQ(equal_pairs(alignment, a, b), most_equal_pairs(a, b));
        EXPECT_FALSE(alignment.not_smallest_from);
    }
}

TEST_F(Alignments, FindWhatWasRemovedInsertedAndChanged) {
    for (int n = 0; n < 100; ++n) {
        Sequence a(200);
        for (size_t i = 0; i < a.size(); ++i) {
            a[i] = {i, 0};
        }
        // At places of their own, so that none can be taken for another.
        const size_t removed = random(60);
        const size_t inserted = 70 + random(60);
        const size_t changed = 140 + random(60);
        Sequence b = a;
        b[changed].key = 2000;
        b.insert(b.begin() + static_cast<ptrdiff_t>(inserted), {1000, 0});
        b.erase(b.begin() + static_cast<ptrdiff_t>(removed));
        const Alignment alignment = align(a, b, kMost);
        check(alignment, a, b);
        std::vector<Step> differences;
        std::copy_if(alignment.steps.begin(), alignment.steps.end(), std::back_inserter(differences),
                     [&](const Step &step) { return !step.is_pair() || a[step.a].key != b[step.b].key; });
        const std::vector<Step> wanted = {{removed, Step::kAbsent}, {Step::kAbsent, inserted - 1}, {changed, changed}};
        EXPECT_EQ(differences, wanted);
    }
}

TEST_F(Alignments, OfOtherNamesAreNoPairs) {
    const Sequence a = {{1, 1}, {2, 2}};
    const Sequence b = {{3, 3}, {4, 2}};
    const std::vector<Step> wanted = {{0, Step::kAbsent}, {Step::kAbsent, 0}, {1, 1}};
    EXPECT_EQ(align(a, b, kMost).steps, wanted);
}

TEST_F(Alignments, AreWholeWhateverTheBound) {
    for (int n = 0; n < 200; ++n) {
        const size_t keys = 1 + random(12);
        const Sequence a = sequence(random(60), keys);
        const Sequence b = sequence(random(60), keys);
        check(align(a, b, random(10)), a, b);
    }
}

TEST_F(Alignments, SayFromWhereOnTheyAreNotTheSmallest) {
    Sequence a(100, {1, 1});
    Sequence b = a;
    for (size_t i = 0; i < a.size(); ++i) {
        a[i].key = i;
        b[i].key = i < 20 ? i : 1000 + i;
    }
    const Alignment alignment = align(a, b, 10);
    ASSERT_TRUE(alignment.not_smallest_from);
    EXPECT_EQ(*alignment.not_smallest_from, (Step{25, 25}));
    check(alignment, a, b);
}

TEST_F(Alignments, OfSequencesWithoutAnythingEqualTakeNoLongerThanTheirBound) {
    constexpr size_t kSize = 20000;
    Sequence a(kSize);
    Sequence b(kSize);
    for (size_t i = 0; i < kSize; ++i) {
        a[i] = {i, i % 7};
        b[i] = {kSize + i, i % 7};
    }
    // Without a bound these are 40,000 differences, and memory for as many squared.
    const Alignment alignment = align(a, b, 100);
    check(alignment, a, b);
    EXPECT_TRUE(alignment.not_smallest_from);
}

}  // namespace alignment_test
