// Random sequences on the egress queues: whatever is set and in whatever order, no frame is lost, invented or overtaken
// in its queue, the memory is accounted for, and no port sends more than its rate.
#include <algorithm>
#include <deque>
#include <random>

#include "vdevice/chip/testing/queue_fixture.h"

namespace vdevice::chip {
namespace queue_model_test {

using namespace std::chrono_literals;

class QueueLife : public test::QueueTest {
  protected:
    struct Expected {
        uint32_t number;
        size_t octets;
    };

    struct Line {
        std::deque<Expected> waiting;
        uint64_t frames = 0;
        uint64_t octets = 0;
        uint64_t drops = 0;
        uint64_t flushed = 0;
    };

    static constexpr int kUsedPorts = 6;

    uint32_t any(uint32_t first, uint32_t last) {
        return std::uniform_int_distribution<uint32_t>{first, last}(random_);
    }
    int any_port() { return static_cast<int>(any(0, kUsedPorts - 1)); }
    Line &line(int port, size_t queue) { return lines_[static_cast<size_t>(port) * kQueues + queue]; }

    size_t octets_of(int port, size_t queue) {
        size_t octets = 0;
        for (const Expected &frame : line(port, queue).waiting) {
            octets += frame.octets;
        }
        return octets;
    }
    size_t all_octets() {
        size_t octets = 0;
        for (int port = 0; port < kUsedPorts; ++port) {
            for (size_t queue = 0; queue < kQueues; ++queue) {
                octets += octets_of(port, queue);
            }
        }
        return octets;
    }

    void offer() {
        const int port = any_port();
        const size_t queue = any(0, kQueues - 1);
        const size_t octets = any(0, 3) == 0 ? any(1519, kMaxFrameBytes) : any(60, 1518);
        Line &own = line(port, queue);
        if (!queues_.holds(port)) {
            queues_.pass(port, queue, octets);
            ++own.frames;
            own.octets += octets;
            return;
        }
        const bool has_room = octets_of(port, queue) + octets <= PortQueues::kQueueOctets &&
                              all_octets() + octets <= EgressQueues::kOctets;
        if (has_room) {
            own.waiting.push_back({next_number_, octets});
        } else {
            ++own.drops;
        }
        put(now_, port, queue, octets);
    }

    void take() {
        const EgressQueues::Departure departure = *queues_.next();
        const QueuedFrame frame = queues_.take_next();
        const uint32_t number = read32(frame.octets, test::kNumberAt);
        EXPECT_LE(last_, departure.time);
        last_ = departure.time;
        int found = 0;
        for (size_t queue = 0; queue < kQueues; ++queue) {
            Line &own = line(departure.port, queue);
            if (!own.waiting.empty() && own.waiting.front().number == number) {
                EXPECT_EQ(own.waiting.front().octets, frame.octets.size());
                own.waiting.pop_front();
                ++own.frames;
                own.octets += frame.octets.size();
                ++found;
            }
        }
        EXPECT_EQ(found, 1) << "frame " << number << " was not the first of any queue";
    }

    void run_to(Time time) {
        while (queues_.next() && queues_.next()->time <= time) {
            ASSERT_GE(queues_.next()->time, now_ - kLongestStep);
            take();
        }
        now_ = time;
        last_ = std::max(last_, time);
    }

    void change() {
        const int port = any_port();
        switch (any(0, 3)) {
            case 0:
                shape(port, any(0, 200), any(0, 2) == 0 ? 0 : any(1, 50000), now_);
                break;
            case 1: {
                QueueWeights weights;
                std::generate(weights.begin(), weights.end(), [&] { return any(0, 9); });
                EXPECT_EQ(queues_.set_scheduler(now_, port, {static_cast<SchedulerMode>(any(0, 2)), weights}),
                          Status::kOk);
                break;
            }
            case 2:
                flush(port);
                break;
            default:
                break;
        }
    }

    void flush(int port) {
        queues_.flush(port);
        for (size_t queue = 0; queue < kQueues; ++queue) {
            Line &own = line(port, queue);
            own.flushed += own.waiting.size();
            own.waiting.clear();
        }
    }

    void check_queue(int port, size_t queue) {
        const Line &own = line(port, queue);
        const QueueCounters &seen = counters(port, queue);
        ASSERT_EQ(seen.frames, own.frames);
        ASSERT_EQ(seen.octets, own.octets);
        ASSERT_EQ(seen.drops, own.drops);
        ASSERT_EQ(seen.flushed, own.flushed);
        ASSERT_EQ(queues_.port(port).waiting_frames(queue), own.waiting.size());
        ASSERT_EQ(queues_.port(port).waiting_octets(queue), octets_of(port, queue));
    }

    void check() {
        for (int port = 0; port < kUsedPorts; ++port) {
            bool waits = false;
            for (size_t queue = 0; queue < kQueues; ++queue) {
                check_queue(port, queue);
                waits = waits || !line(port, queue).waiting.empty();
            }
            ASSERT_EQ(queues_.port(port).is_waiting(), waits);
            ASSERT_EQ(queues_.holds(port), waits || queues_.port(port).shaper() != nullptr);
        }
        ASSERT_EQ(queues_.waiting_octets(), all_octets());
        ASSERT_EQ(queues_.next().has_value(), all_octets() != 0);
    }

    static constexpr Time kLongestStep = 2ms;
    std::mt19937 random_;
    std::array<Line, size_t{kUsedPorts} * kQueues> lines_;
    Time now_{};
    Time last_{};
};

TEST_F(QueueLife, LosesInventsAndReordersNothing) {
    constexpr int kSteps = 20000;
    constexpr int kStepsBetweenChecks = 50;
    random_.seed(20);
    for (int port = 0; port < kUsedPorts; ++port) {
        shape(port, 0, 20000);
    }
    for (int step = 0; step < kSteps && !HasFatalFailure(); ++step) {
        run_to(now_ + Time{any(0, static_cast<uint32_t>(kLongestStep.count()))});
        for (uint32_t frames = any(0, 9); frames > 0; --frames) {
            offer();
        }
        if (any(0, 99) == 0) {
            change();
        }
        if (step % kStepsBetweenChecks == 0) {
            check();
        }
    }
    uint64_t drops = 0;
    uint64_t flushed = 0;
    for (const Line &own : lines_) {
        drops += own.drops;
        flushed += own.flushed;
    }
    EXPECT_GT(drops, 0U) << "the life was too easy";
    EXPECT_GT(flushed, 0U);
    run_to(Time::max());
    check();
    EXPECT_EQ(queues_.waiting_octets(), 0U);
}

TEST_F(QueueLife, KeepsToTheRateOverEveryStretchOfTime) {
    constexpr int64_t kBurst = 40;  // kbit
    constexpr int64_t kUnitsPerKilobit = 1'000'000'000;
    random_.seed(21);
    shape(0, kBurst, test::kRate);
    std::vector<std::pair<int64_t, int64_t>> sent;  // when, and how much so far, in bits
    int64_t bits = 0;
    for (int step = 0; step < 3000; ++step) {
        now_ += Time{any(0, 3'000'000)};
        for (uint32_t frames = any(0, 6); frames > 0; --frames) {
            put(now_, 0, any(0, kQueues - 1), any(60, 1518));
        }
        while (queues_.next() && queues_.next()->time <= now_) {
            const Time time = queues_.next()->time;
            sent.emplace_back(time.count(), bits);
            bits += static_cast<int64_t>(8 * (queues_.take_next().octets.size() + kCheckSequenceBytes));
        }
    }
    // The bucket's promise, for every two frames: between them no more than the burst and what the rate lets in.
    ASSERT_GT(sent.size(), 2000U);
    int64_t lowest = INT64_MAX;
    for (size_t i = 0; i + 1 < sent.size(); ++i) {
        const auto [time, before] = sent[i];
        lowest = std::min(lowest, before * kUnitsPerKilobit / 1000 - time * test::kRate);
        const int64_t after = sent[i + 1].second * kUnitsPerKilobit / 1000 - time * test::kRate;
        ASSERT_LE(after - lowest, kBurst * kUnitsPerKilobit) << i;
    }
}

}  // namespace queue_model_test
}  // namespace vdevice::chip
