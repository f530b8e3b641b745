// What a full queue keeps, and where it says that something is missing.
#include "vdevice/inspect/bounded_queue.h"

#include <gtest/gtest.h>

#include <string>

namespace vdevice::inspect {
namespace bounded_queue_test {

using Queue = BoundedQueue<int>;

constexpr size_t kMost = 3;

/** Takes everything; what is missing is shown in brackets. */
std::string drain(Queue &queue) {
    std::string text;
    while (const auto taken = queue.take()) {
        const auto *missed = std::get_if<Missed>(&*taken);
        text += missed == nullptr ? std::to_string(std::get<int>(*taken)) : "[" + std::to_string(missed->count) + "]";
    }
    return text;
}

TEST(BoundedQueue, MissesWhatFindsNoRoom) {
    Queue queue{kMost, [] {}};
    for (const int item : {1, 2, 3, 4, 5}) {
        queue.put(item);
    }
    EXPECT_EQ(drain(queue), "123[2]");
}

TEST(BoundedQueue, MakesRoomForTheNewest) {
    Queue queue{kMost, [] {}};
    for (const int item : {1, 2, 3, 4, 5}) {
        queue.make_room(1);
        queue.put(item);
    }
    EXPECT_EQ(drain(queue), "[2]345");
}

TEST(BoundedQueue, MissesAllWhenOneTakesAllRoom) {
    Queue queue{kMost, [] {}};
    queue.put(1);
    queue.put(2);
    queue.make_room(kMost);
    queue.put(3, kMost);
    EXPECT_EQ(drain(queue), "[2]3");
}

TEST(BoundedQueue, CountsWhatIsTooLargeForIt) {
    Queue queue{kMost, [] {}};
    queue.put(1);
    queue.make_room(kMost + 1);
    queue.put(2, kMost + 1);
    EXPECT_EQ(drain(queue), "[2]");
}

TEST(BoundedQueue, WakesItsReaderAgainAfterItWasEmpty) {
    int woken = 0;
    Queue queue{kMost, [&] { ++woken; }};
    queue.put(1);
    queue.put(2);
    EXPECT_EQ(woken, 1);
    drain(queue);
    queue.put(3);
    EXPECT_EQ(woken, 2);
}

}  // namespace bounded_queue_test
}  // namespace vdevice::inspect
