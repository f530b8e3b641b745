// What those who watch are told, and how much of it waits for them.
#include "vdevice/inspect/happening.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace vdevice::inspect {
namespace happening_test {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr HappeningKinds kDropsOnly = bit_of(HappeningKind::kDrops);

Happening drop(uint64_t count) {
    return {1s, HappeningKind::kDrops, "storm", 3, 0, {}, count};
}

TEST(Happening, IsJsonAndText) {
    EXPECT_EQ(to_json(drop(12)),
              (json{{"time", 1.0}, {"kind", "drops"}, {"what", "storm"}, {"port", 3}, {"count", 12}}));
    EXPECT_EQ(to_text(drop(12)), "    1.000000  drops     port 3 12 frames storm\n");
    const Happening link{1500ms, HappeningKind::kLinks, "up", 0, 0, {}, 0};
    EXPECT_EQ(to_json(link), (json{{"time", 1.5}, {"kind", "links"}, {"what", "up"}, {"port", 0}}));
    EXPECT_EQ(to_text(link), "    1.500000  links     port cpu up\n");
    const Happening address{1s, HappeningKind::kLearning, "moved", 2, 10, chip::Mac{0x020000000005}, 0};
    EXPECT_EQ(to_json(address)["mac"], "02:00:00:00:00:05");
    EXPECT_EQ(to_text(address), "    1.000000  learning  moved 02:00:00:00:00:05 in VLAN 10 on port 2\n");
    const Happening more{1s, HappeningKind::kLearning, "", 0, 0, {}, 7};
    EXPECT_EQ(to_json(more), (json{{"time", 1.0}, {"kind", "learning"}, {"count", 7}}));
    EXPECT_EQ(to_text(more), "    1.000000  learning  7 more addresses\n");
    EXPECT_EQ(to_text({1s, HappeningKind::kAgeing, "", 0, 0, {}, 4}), "    1.000000  ageing    4 addresses\n");
    EXPECT_EQ(to_text({1s, HappeningKind::kFull, "", 4, 0, {}, 4}),
              "    1.000000  full      port 4 4 addresses not learned\n");
    EXPECT_EQ(to_text({1s, HappeningKind::kMissed, "", 0, 0, {}, 120}), "    1.000000  missed    120 events\n");
}

TEST(HappeningQueue, WakesItsReaderOnceAndGivesAllInOrder) {
    int woken = 0;
    HappeningQueue queue(kDropsOnly, [&] { ++woken; });
    queue.put({1s, HappeningKind::kLinks, "up", 1, 0, {}, 0});
    EXPECT_EQ(woken, 0) << "not asked for";
    queue.put(drop(1));
    queue.put(drop(2));
    EXPECT_EQ(woken, 1);
    EXPECT_EQ(queue.take()->count, 1U);
    EXPECT_EQ(queue.take()->count, 2U);
    EXPECT_FALSE(queue.take());
    queue.put(drop(3));
    EXPECT_EQ(woken, 2);
}

TEST(HappeningQueue, TellsASlowReaderHowMuchItMissedAndWhere) {
    HappeningQueue queue(kDropsOnly, [] {});
    for (uint64_t count = 0; count < HappeningQueue::kMost + 120; ++count) {
        queue.put(drop(count));
    }
    EXPECT_EQ(queue.take()->count, 0U);
    queue.put(drop(5000));
    for (uint64_t count = 1; count < HappeningQueue::kMost; ++count) {
        ASSERT_EQ(queue.take()->count, count);
    }
    const auto missed = queue.take();
    EXPECT_EQ(missed->kind, HappeningKind::kMissed);
    EXPECT_EQ(missed->count, 120U);
    EXPECT_EQ(queue.take()->count, 5000U) << "what came behind the gap";
    EXPECT_FALSE(queue.take());
}

TEST(HappeningQueue, TellsWhatWasMissedAtItsEnd) {
    HappeningQueue queue(kDropsOnly, [] {});
    for (uint64_t count = 0; count <= HappeningQueue::kMost; ++count) {
        queue.put(drop(count));
    }
    for (uint64_t count = 0; count < HappeningQueue::kMost; ++count) {
        queue.take();
    }
    EXPECT_EQ(queue.take()->kind, HappeningKind::kMissed);
    EXPECT_FALSE(queue.take());
}

}  // namespace happening_test
}  // namespace vdevice::inspect
