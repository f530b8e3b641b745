// For tests: systems joined by cables that delay and lose frames and can be pulled.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "switchd/lacp/system.h"

namespace switchd::lacp::test {

using std::chrono::milliseconds;
using std::chrono::seconds;

/** A port of one of the systems. */
struct End {
    size_t system = 0;
    uint16_t port = 0;

    auto operator<=>(const End &) const = default;
};

struct Cable {
    End ends[2];
    Time delay{};
    uint32_t lost_percent[2] = {0, 0}; /**< of the frames sent by each end */
    bool is_plugged = false;
    uint32_t plugged_count = 0;
    Time last_arrival[2] = {}; /**< of the frames sent by each end, which do not overtake each other */
};

class Network {
  public:
    explicit Network(uint32_t seed = 1) : random_{seed} {}

    size_t add_system(const SystemId &id) {
        const size_t number = systems_.size();
        systems_.push_back(new_system(number, id));
        return number;
    }

    /** Forgets all that the system knew, as a killed program does; its ports are to be added again. */
    void restart(size_t number) { systems_[number] = new_system(number, systems_[number]->id()); }

    System &system(size_t number) { return *systems_[number]; }
    Time now() const { return now_; }
    std::deque<Cable> &cables() { return cables_; }
    std::mt19937 &random() { return random_; }
    /** Is called after each event. */
    void watch(std::function<void()> watcher) { watcher_ = std::move(watcher); }

    Cable &join(End a, End b) {
        cables_.push_back({.ends = {a, b}});
        plug(cables_.back());
        return cables_.back();
    }

    void plug(Cable &cable) { set_plugged(cable, true); }
    void pull(Cable &cable) { set_plugged(cable, false); }

    void run(Time time) {
        const Time end = now_ + time;
        while (const auto next = next_event()) {
            if (*next > end) {
                break;
            }
            now_ = std::max(now_, *next);
            step();
        }
        now_ = end;
    }

    /** Runs until it holds; false if it does not within the time. */
    bool run_until(const std::function<bool()> &holds, Time time) {
        for (const Time end = now_ + time; !holds() && now_ < end;) {
            run(milliseconds(1));
        }
        return holds();
    }

  private:
    struct Flying {
        size_t cable;
        int to;
        uint32_t plugged_count;
        std::vector<uint8_t> frame;
    };

    std::unique_ptr<System> new_system(size_t number, const SystemId &id) {
        return std::make_unique<System>(id, [this, number](uint16_t port, std::span<const uint8_t> frame) {
            send({number, port}, frame);
        });
    }

    void send(End from, std::span<const uint8_t> frame) {
        for (size_t i = 0; i < cables_.size(); ++i) {
            Cable &cable = cables_[i];
            for (const int end : {0, 1}) {
                if (cable.is_plugged && cable.ends[end] == from && random_() % 100 >= cable.lost_percent[end]) {
                    Time &arrival = cable.last_arrival[end];
                    arrival = std::max(arrival, now_ + cable.delay);
                    flying_.emplace(arrival, Flying{i, 1 - end, cable.plugged_count, {frame.begin(), frame.end()}});
                }
            }
        }
    }

    void set_plugged(Cable &cable, bool plugged) {
        cable.is_plugged = plugged;
        ++cable.plugged_count;
        for (const End &end : cable.ends) {
            system(end.system).set_link(end.port, plugged, true, now_);
        }
    }

    std::optional<Time> next_event() const {
        std::optional<Time> next;
        if (!flying_.empty()) {
            next = flying_.begin()->first;
        }
        for (const auto &system : systems_) {
            const auto deadline = system->next_deadline();
            if (deadline && (!next || *deadline < *next)) {
                next = deadline;
            }
        }
        return next;
    }

    void step() {
        if (!flying_.empty() && flying_.begin()->first <= now_) {
            const Flying flying = std::move(flying_.extract(flying_.begin()).mapped());
            const Cable &cable = cables_[flying.cable];
            if (cable.is_plugged && cable.plugged_count == flying.plugged_count) {
                const End &to = cable.ends[flying.to];
                system(to.system).receive(to.port, flying.frame, now_);
            }
        }
        for (const auto &system : systems_) {
            if (const auto deadline = system->next_deadline(); deadline && *deadline <= now_) {
                system->tick(now_);
                if (system->next_deadline() <= now_ && system->next_deadline()) {
                    throw std::logic_error("a deadline stays after its tick");
                }
            }
        }
        if (watcher_) {
            watcher_();
        }
    }

    std::mt19937 random_;
    Time now_ = seconds(1000);
    std::vector<std::unique_ptr<System>> systems_;
    std::deque<Cable> cables_;
    std::multimap<Time, Flying> flying_;
    std::function<void()> watcher_;
};

}  // namespace switchd::lacp::test
