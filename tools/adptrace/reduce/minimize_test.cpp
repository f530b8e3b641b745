// Wholes of which the parts that fail are known.
#include "tools/adptrace/reduce/minimize.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

namespace minimize_test {

using adptrace::minimize;
using adptrace::Parts;
using testing::ElementsAre;
using testing::IsEmpty;

bool has_all(const Parts &parts, const Parts &wanted) {
    return std::includes(parts.begin(), parts.end(), wanted.begin(), wanted.end());
}

Parts random_parts(std::mt19937 &random, size_t count) {
    Parts all(count);
    std::iota(all.begin(), all.end(), 0);
    Parts some;
    std::sample(all.begin(), all.end(), std::back_inserter(some), 1 + random() % 6, random);
    return some;
}

TEST(Minimize, FindsTheOnlyPartsThatFail) {
    std::mt19937 random(3);
    for (int n = 0; n < 200; ++n) {
        const size_t count = 6 + random() % 300;
        const Parts wanted = random_parts(random, count);
        EXPECT_EQ(minimize(count, [&](const Parts &parts) { return has_all(parts, wanted); }), wanted);
    }
}

TEST(Minimize, FindsPartsOfWhichNoneCanBeLeftOut) {
    std::mt19937 random(4);
    for (int n = 0; n < 200; ++n) {
        const size_t count = 10 + random() % 100;
        // It depends on what else is there whether a part is needed.
        const Parts first = random_parts(random, count);
        const Parts second = random_parts(random, count);
        const auto fails = [&](const Parts &parts) {
            return has_all(parts, parts.size() % 2 == 0 ? first : second) || parts.size() == count;
        };
        const Parts found = minimize(count, fails);
        EXPECT_TRUE(fails(found));
        for (size_t at = 0; at < found.size() && found.size() < count; ++at) {
            Parts fewer = found;
            fewer.erase(fewer.begin() + static_cast<ptrdiff_t>(at));
            EXPECT_FALSE(fails(fewer));
        }
    }
}

TEST(Minimize, AsksForNoPartsTwiceAndNotForTheWhole) {
    std::mt19937 random(5);
    for (int n = 0; n < 50; ++n) {
        const size_t count = 2 + random() % 60;
        const Parts wanted = random_parts(random, count);
        // Of signed numbers: libstdc++ 12 orders vectors of unsigned ones wrongly on big-endian machines.
        std::set<std::vector<int64_t>> asked;
        minimize(count, [&](const Parts &parts) {
            EXPECT_TRUE(asked.emplace(parts.begin(), parts.end()).second);
            EXPECT_LT(parts.size(), count);
            return has_all(parts, wanted);
        });
    }
}

TEST(Minimize, AsksSeldomForOnePartOfMany) {
    size_t asked = 0;
    const auto fails = [&asked](const Parts &parts) {
        ++asked;
        return has_all(parts, {77777});
    };
    EXPECT_THAT(minimize(100000, fails), ElementsAre(77777U));
    EXPECT_LT(asked, 60U);
}

TEST(Minimize, LeavesNothingOfWhatFailsAnyway) {
    EXPECT_THAT(minimize(20, [](const Parts & /*parts*/) { return true; }), IsEmpty());
    EXPECT_THAT(minimize(0, [](const Parts & /*parts*/) { return true; }), IsEmpty());
}

TEST(Minimize, KeepsEverythingIfEverythingIsNeeded) {
    const Parts all = minimize(20, [](const Parts & /*parts*/) { return false; });
    EXPECT_EQ(all.size(), 20U);
}

}  // namespace minimize_test
