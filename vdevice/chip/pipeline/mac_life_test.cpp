// Random sequences on the MAC table against a naive map: ten thousand stations come, move, fall silent and are deleted,
// and every few steps both hold the same numbers of entries and have refused and moved as many.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>

#include "vdevice/chip/tables/mac_table.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace mac_life_test {

constexpr int kStations = 10000;
constexpr int kPorts = 30;
constexpr int kVlans = 5;
constexpr int64_t kAgeSeconds = 300;

struct Station {
    int vid;
    std::array<unsigned, 6> octets;

    auto operator<=>(const Station &) const = default;

    Mac mac() const {
        uint64_t value = 0;
        for (const unsigned octet : octets) {
            value = value * 256 + octet;
        }
        return Mac{value};
    }
    /** The documented sum, octet by octet. */
    unsigned bucket() const {
        const unsigned high = octets[0] + octets[2] + octets[4];
        const unsigned low = octets[1] + octets[3] + octets[5];
        return (high * 256 + low + static_cast<unsigned>(vid)) % 1024;
    }
};

class NaiveTable {
  public:
    struct Row {
        int port;
        bool is_static;
        int64_t seen;
    };

    void learn(const Station &station, int port, int64_t now) {
        const auto row = rows_.find(station);
        if (row == rows_.end()) {
            if (add(station, {port, false, now})) {
                ++learned;
            } else {
                ++refused;
            }
        } else if (!row->second.is_static) {
            moved += row->second.port != port ? 1U : 0U;
            add(station, {port, false, now});
        }
    }

    bool add(const Station &station, Row row) {
        if (rows_.count(station) == 0 && buckets_[station.bucket()] == 8) {
            return false;
        }
        remove(station);
        rows_[station] = row;
        ++buckets_[station.bucket()];
        if (!row.is_static) {
            ++dynamic_in_vlan[station.vid];
            ++dynamic_on_port[row.port];
        }
        return true;
    }

    bool remove(const Station &station) {
        const auto row = rows_.find(station);
        if (row == rows_.end()) {
            return false;
        }
        if (!row->second.is_static) {
            --dynamic_in_vlan[station.vid];
            --dynamic_on_port[row->second.port];
        }
        --buckets_[station.bucket()];
        rows_.erase(row);
        return true;
    }

    template <typename Picks>
    size_t remove_if(Picks picks) {
        std::vector<Station> gone;
        for (const auto &[station, row] : rows_) {
            if (picks(station, row)) {
                gone.push_back(station);
            }
        }
        for (const Station &station : gone) {
            remove(station);
        }
        return gone.size();
    }

    const std::map<Station, Row> &rows() const { return rows_; }

    uint64_t learned = 0;
    uint64_t moved = 0;
    uint64_t refused = 0;
    uint64_t aged = 0;
    std::map<int, uint32_t> dynamic_in_vlan;
    std::map<int, uint32_t> dynamic_on_port;

  private:
    std::map<Station, Row> rows_;
    std::map<unsigned, int> buckets_;
};

class TableLives : public testing::TestWithParam<unsigned> {
  protected:
    TableLives() {
        for (int number = 0; number < kStations; ++number) {
            Station station{pick(1, kVlans), {}};
            for (unsigned &octet : station.octets) {
                octet = static_cast<unsigned>(pick(0, 255));
            }
            station.octets[0] &= 0xFEU;
            stations_.push_back(station);
        }
    }

    int pick(int from, int to) { return std::uniform_int_distribution<int>{from, to}(random_); }
    const Station &some_station() { return stations_[static_cast<size_t>(pick(0, kStations - 1))]; }
    Time time() const { return std::chrono::seconds{now_}; }

    void step();
    void add_static(const Station &station);
    void delete_many();
    void let_time_pass();
    void compare_numbers();
    void compare_entries();

    std::mt19937 random_{GetParam()};
    std::vector<Station> stations_;
    int64_t now_ = 0;
    MacTable table_;
    NaiveTable naive_;
};

void TableLives::add_static(const Station &station) {
    const int port = pick(0, kPorts - 1);
    const bool added = naive_.add(station, {port, true, 0});
    const Status status = table_.add_static(station.mac(), static_cast<Vid>(station.vid), port);
    ASSERT_EQ(status == Status::kOk, added);
}

void TableLives::delete_many() {
    const int port = pick(0, kPorts - 1);
    const int vid = pick(1, kVlans);
    const bool is_static = pick(0, 1) == 1;
    MacFilter filter;
    filter.kind = is_static ? MacFilter::Kind::kStatic : MacFilter::Kind::kDynamic;
    filter.vid = static_cast<Vid>(vid);
    filter.place = Place{port};
    const auto picks = [&](const Station &station, const NaiveTable::Row &row) {
        return station.vid == vid && row.port == port && row.is_static == is_static;
    };
    ASSERT_EQ(table_.remove_all(filter), naive_.remove_if(picks));
}

void TableLives::let_time_pass() {
    now_ += pick(0, 20);
    table_.age(time());
    naive_.aged += naive_.remove_if(
        [&](const Station &, const NaiveTable::Row &row) { return !row.is_static && now_ - row.seen >= kAgeSeconds; });
}

void TableLives::step() {
    const Station &station = some_station();
    const Vid vid = static_cast<Vid>(station.vid);
    const int action = pick(0, 999);
    if (action < 5) {
        let_time_pass();
    } else if (action < 8) {
        delete_many();
    } else if (action < 40) {
        add_static(station);
    } else if (action < 150) {
        ASSERT_EQ(table_.remove(station.mac(), vid) == Status::kOk, naive_.remove(station));
    } else {
        const int port = pick(0, kPorts - 1);
        table_.learn(station.mac(), vid, port, time());
        naive_.learn(station, port, now_);
    }
}

void TableLives::compare_numbers() {
    ASSERT_EQ(table_.size(), naive_.rows().size());
    ASSERT_EQ(table_.counters().learned, naive_.learned);
    ASSERT_EQ(table_.counters().moved, naive_.moved);
    ASSERT_EQ(table_.counters().refused, naive_.refused);
    ASSERT_EQ(table_.counters().aged, naive_.aged);
    uint32_t total = 0;
    for (const auto &[vid, count] : naive_.dynamic_in_vlan) {
        ASSERT_EQ(table_.counts().in_vlan(static_cast<Vid>(vid)), count);
        total += count;
    }
    ASSERT_EQ(table_.counts().total(), total);
    for (const auto &[port, count] : naive_.dynamic_on_port) {
        ASSERT_EQ(table_.counts().behind({port}), count);
    }
}

void TableLives::compare_entries() {
    for (const auto &[station, row] : naive_.rows()) {
        const MacEntry *entry = table_.find(station.mac(), static_cast<Vid>(station.vid));
        ASSERT_NE(entry, nullptr);
        ASSERT_EQ(entry->port, row.port);
        ASSERT_EQ(entry->is_static, row.is_static);
    }
}

TEST_P(TableLives, AreTheNaiveMaps) {
    constexpr int kSteps = 40000;
    constexpr int kStepsBetweenCounts = 10;
    constexpr int kStepsBetweenComparisons = 1000;
    for (int number = 0; number < kSteps && !HasFatalFailure(); ++number) {
        step();
        if (number % kStepsBetweenCounts == 0) {
            compare_numbers();
        }
        if (number % kStepsBetweenComparisons == 0) {
            compare_entries();
        }
    }
    compare_entries();
    EXPECT_GT(naive_.refused, 0U) << "no bucket was ever full";
    EXPECT_GT(naive_.aged, 0U);
    EXPECT_GT(naive_.moved, 0U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TableLives, test::seeds());

}  // namespace mac_life_test
}  // namespace vdevice::chip
