// A week of a chip's life on the time handed in: stations come, move and fall silent, and after every minute the
// MAC table is that of a plain map; in the end every frame is in a counter.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "vdevice/chip/testing/chip_fixture.h"

namespace vdevice::chip {
namespace week_test {

using namespace std::chrono_literals;
using namespace test;

constexpr Time kWeek = std::chrono::hours{24 * 7};
constexpr Time kRound = 1min;
constexpr int kMostFramesInRound = 32;
constexpr uint8_t kStations = 200;
constexpr uint64_t kAlmostWrapped = 0xFFFF'F000; /**< a counter of 32 bits would begin again at 0 within the week */
constexpr uint32_t kShaperRate = 64;             /**< kbit/s, and frames wait for it */

struct Seen {
    int port;
    Time at;
};

/** Stations on A and B, all of which send to an address that nobody has. B is shaped. */
class Week : public ChipTest {
  protected:
    Week() {
        change(kA, [](Port &port) { port.counters.rx_octets = kAlmostWrapped; });
        EXPECT_EQ(chip_.set_shaper(0s, kB, {kShaperRate, 0}), Status::kOk);
    }

    uint64_t number(uint64_t end) { return random_() % end; }

    void one_frame(Time now) {
        const auto who = static_cast<uint8_t>(number(kStations) + 1);
        const int port = number(2) == 0 ? kA : kB;
        const Octets frame = Octets{0x02, 0xFF, 0, 0, 0, 1} + station(who) + kPayload;
        chip_.receive(now, port, frame);
        ++sent_[port];
        const auto [entry, is_new] = model_.try_emplace(who, Seen{port, now});
        learned_ += is_new ? 1U : 0U;
        moved_ += !is_new && entry->second.port != port ? 1U : 0U;
        entry->second = {port, now};
    }

    void one_round(Time begin) {
        const uint64_t frames = number(kMostFramesInRound);
        for (uint64_t i = 0; i < frames; ++i) {
            one_frame(begin + kRound * i / kMostFramesInRound);
        }
        const Time end = begin + kRound;
        chip_.depart(end);
        chip_.tick(end);
        aged_ +=
            std::erase_if(model_, [&](const auto &row) { return end - row.second.at >= MacTable::kDefaultAgeTime; });
        for (const auto &[port, octets] : sink_.take()) {
            ++left_[port];
        }
    }

    /** The first address on which table and map differ, or 0. */
    int difference() const {
        for (int who = 1; who <= kStations; ++who) {
            const MacEntry *entry = chip_.macs().find(Mac{(uint64_t{2} << 40) + static_cast<uint64_t>(who)}, kMinVid);
            const auto row = model_.find(static_cast<uint8_t>(who));
            const bool is_same = entry == nullptr ? row == model_.end()
                                                  : row != model_.end() && entry->port == row->second.port &&
                                                        entry->last_seen == row->second.at;
            if (!is_same) {
                return who;
            }
        }
        return 0;
    }

    std::mt19937_64 random_{1};
    std::map<uint8_t, Seen> model_;
    std::map<int, uint64_t> sent_;
    std::map<int, uint64_t> left_;
    uint64_t learned_ = 0;
    uint64_t moved_ = 0;
    uint64_t aged_ = 0;
};

TEST_F(Week, AgesEveryStationAndCountsEveryFrame) {
    Time now{0};
    for (; now < kWeek; now += kRound) {
        one_round(now);
        ASSERT_EQ(chip_.macs().size(), model_.size()) << now.count();
        ASSERT_EQ(difference(), 0) << now.count();
    }
    const MacTable::Counters &counters = chip_.macs().counters();
    EXPECT_EQ(counters.learned, learned_);
    EXPECT_EQ(counters.moved, moved_);
    EXPECT_EQ(counters.aged, aged_);
    EXPECT_GT(aged_, 0U);
    EXPECT_EQ(chip_.next_departure(), std::nullopt);
    const PortCounters &a = chip_.port(kA).counters;
    const PortCounters &b = chip_.port(kB).counters;
    EXPECT_EQ(a.rx_frames, sent_[kA]);
    EXPECT_EQ(a.rx_octets, kAlmostWrapped + sent_[kA] * (kPayload.size() + 2 * kMacBytes));
    EXPECT_GT(a.rx_octets, uint64_t{1} << 32);
    EXPECT_EQ(b.rx_frames, sent_[kB]);
    EXPECT_EQ(a.tx_frames, sent_[kB]);
    EXPECT_EQ(b.tx_frames, sent_[kA]) << "the shaper held frames back, and lost none";
    EXPECT_EQ(left_[kA], a.tx_frames);
    EXPECT_EQ(left_[kB], b.tx_frames);
    EXPECT_EQ(left_[kC], sent_[kA] + sent_[kB]);
}

}  // namespace week_test
}  // namespace vdevice::chip
