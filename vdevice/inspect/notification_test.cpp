// What those who watch are told, and how much of it waits for them.
#include "vdevice/inspect/notification.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace vdevice::inspect {
namespace notification_test {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr NotificationKinds kDropsOnly = bit_of(NotificationKind::kDrops);

Notification drop(uint64_t count) {
    return {1s, NotificationKind::kDrops, "storm", 3, 0, {}, count};
}

TEST(Notification, IsJsonAndText) {
    EXPECT_EQ(to_json(drop(12)),
              (json{{"time", 1.0}, {"kind", "drops"}, {"what", "storm"}, {"port", 3}, {"count", 12}}));
    EXPECT_EQ(to_text(drop(12)), "    1.000000  drops     port 3 12 frames storm\n");
    const Notification link{1500ms, NotificationKind::kLinks, "up", 0, 0, {}, 0};
    EXPECT_EQ(to_json(link), (json{{"time", 1.5}, {"kind", "links"}, {"what", "up"}, {"port", 0}}));
    EXPECT_EQ(to_text(link), "    1.500000  links     port cpu up\n");
    const Notification address{1s, NotificationKind::kLearning, "moved", 2, 10, chip::Mac{0x020000000005}, 0};
    EXPECT_EQ(to_json(address)["mac"], "02:00:00:00:00:05");
    EXPECT_EQ(to_text(address), "    1.000000  learning  moved 02:00:00:00:00:05 in VLAN 10 on port 2\n");
    const Notification more{1s, NotificationKind::kLearning, "", 0, 0, {}, 7};
    EXPECT_EQ(to_json(more), (json{{"time", 1.0}, {"kind", "learning"}, {"count", 7}}));
    EXPECT_EQ(to_text(more), "    1.000000  learning  7 more addresses\n");
    EXPECT_EQ(to_text({1s, NotificationKind::kAgeing, "", 0, 0, {}, 4}), "    1.000000  ageing    4 addresses\n");
    EXPECT_EQ(to_text({1s, NotificationKind::kFull, "", 4, 0, {}, 4}),
              "    1.000000  full      port 4 4 addresses not learned\n");
    EXPECT_EQ(to_text({1s, NotificationKind::kMissed, "", 0, 0, {}, 120}), "    1.000000  missed    120 events\n");
}

TEST(NotificationQueue, WakesItsReaderOnceAndGivesAllInOrder) {
    int woken = 0;
    NotificationQueue queue(kDropsOnly, [&] { ++woken; });
    queue.put({1s, NotificationKind::kLinks, "up", 1, 0, {}, 0});
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

TEST(NotificationQueue, TellsASlowReaderHowMuchItMissedAndWhere) {
    NotificationQueue queue(kDropsOnly, [] {});
    for (uint64_t count = 0; count < NotificationQueue::kMost + 120; ++count) {
        queue.put(drop(count));
    }
    EXPECT_EQ(queue.take()->count, 0U);
    queue.put(drop(5000));
    for (uint64_t count = 1; count < NotificationQueue::kMost; ++count) {
        ASSERT_EQ(queue.take()->count, count);
    }
    const auto missed = queue.take();
    EXPECT_EQ(missed->kind, NotificationKind::kMissed);
    EXPECT_EQ(missed->count, 120U);
    EXPECT_EQ(queue.take()->count, 5000U) << "what came behind the gap";
    EXPECT_FALSE(queue.take());
}

TEST(NotificationQueue, TellsWhatWasMissedAtItsEnd) {
    NotificationQueue queue(kDropsOnly, [] {});
    for (uint64_t count = 0; count <= NotificationQueue::kMost; ++count) {
        queue.put(drop(count));
    }
    for (uint64_t count = 0; count < NotificationQueue::kMost; ++count) {
        queue.take();
    }
    EXPECT_EQ(queue.take()->kind, NotificationKind::kMissed);
    EXPECT_FALSE(queue.take());
}

}  // namespace notification_test
}  // namespace vdevice::inspect
