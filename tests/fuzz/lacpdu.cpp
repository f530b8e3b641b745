// Frames from the wire to link aggregation control, with links, settings and time between them: whatever partners say,
// a port distributes only as the protocol allows, little is sent, and what is sent is well-formed.
//
// Input: events, each a byte for its kind and one for the port. A frame as octets (0), a LACPDU about systems of a few
// (1), a change of the link (2), the settings (3), a removal (4), time (5).
#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <span>
#include <variant>

#include "switchd/lacp/system.h"
#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::expect;
using switchd::lacp::Info;
using switchd::lacp::Lacpdu;
using switchd::lacp::System;
using switchd::lacp::SystemId;
using switchd::lacp::Time;
namespace state = switchd::lacp::state;

constexpr uint32_t kPorts = 12;
constexpr uint32_t kKinds = 6;
constexpr size_t kMostInASecond = 3;
constexpr SystemId kOwn = {0x8000, {2, 0, 0, 0, 0, 1}};

class Bench {
  public:
    explicit Bench(fuzz::Input &input) : input_{input} {}

    void run() {
        while (!input_.is_empty()) {
            const uint32_t kind = input_.u8() % kKinds;
            make_event(kind, static_cast<uint16_t>(1 + input_.u8() % kPorts));
            check();
        }
    }

  private:
    void make_event(uint32_t kind, uint16_t port) {
        switch (kind) {
            case 0:
                system_.receive(port, input_.bytes(input_.u8()), now_);
                break;
            case 1: {
                const Lacpdu pdu = {info(), info()};
                const switchd::lacp::Frame frame = frame_of(pdu, pdu.actor.system.mac);
                expect(switchd::lacp::pdu_of(frame) == switchd::lacp::Pdu{pdu}, "a LACPDU is read as it was written");
                system_.receive(port, frame, now_);
                break;
            }
            case 2: {
                const bool is_up = input_.flag();
                system_.set_link(port, is_up, input_.u8() != 0, now_);
                break;
            }
            case 3:  // a port that is new, or new in its group, has sent nothing
                sent_.erase(port);
                set(port);
                sent_.erase(port);
                break;
            case 4:
                system_.remove_port(port, now_);
                sent_.erase(port);
                break;
            default:
                pass(std::chrono::milliseconds(input_.u16()));
        }
    }

    void set(uint16_t port) {
        const uint8_t bits = input_.u8();
        const switchd::lacp::PortSettings settings = {.key = static_cast<uint16_t>(bits & 1),
                                                      .priority = static_cast<uint16_t>(bits >> 3 & 3),
                                                      .is_active = (bits & 2) != 0,
                                                      .is_fast = (bits & 4) != 0};
        if ((bits & 0x80) != 0) {
            system_.resume_port(port, settings, info(), now_);
        } else {
            system_.set_port(port, settings, now_);
        }
    }

    /** An end of a link, often one that there is. */
    Info info() {
        const uint8_t who = input_.u8();
        Info end = {kOwn, static_cast<uint16_t>(who >> 2 & 1), static_cast<uint16_t>(who >> 3 & 3), input_.u8(),
                    input_.u8()};
        end.system.mac[5] = who & 3;
        if ((who & 0x80) != 0) {
            end.key = input_.u16();
            end.port_priority = input_.u16();
            end.system.priority = input_.u16();
        }
        return end;
    }

    void pass(Time time) {
        const Time end = now_ + time;
        for (auto next = system_.next_deadline(); next && *next <= end; next = system_.next_deadline()) {
            now_ = std::max(now_, *next);
            system_.tick(now_);
            next = system_.next_deadline();
            expect(!next || *next > now_, "a deadline passes");
            check();
        }
        now_ = end;
    }

    void check() const {
        std::map<uint16_t, size_t> distributing;
        for (uint16_t port = 1; port <= kPorts; ++port) {
            const auto *status = system_.find(port);
            if (status == nullptr || !status->is_distributing()) {
                continue;
            }
            ++distributing[status->actor.key];
            expect(status->is_running(), "a port distributes with a link");
            expect(status->partner.has(state::kSynchronization) && status->partner.has(state::kCollecting) &&
                       status->partner.has(state::kAggregation),
                   "a port distributes to a partner that collects");
            const auto partner = system_.group(status->actor.key).partner;
            expect(partner && partner->system == status->partner.system && partner->key == status->partner.key,
                   "a group has one partner");
            expect(partner->system.mac != kOwn.mac, "a group does not lead to itself");
        }
        for (const auto &[key, count] : distributing) {
            expect(count <= switchd::lacp::kMostSelected, "a group has no more members than the chip takes");
        }
    }

    void take(uint16_t port, std::span<const uint8_t> frame) {
        const auto pdu = switchd::lacp::pdu_of(frame);
        expect(frame.size() == switchd::lacp::kFrameSize, "a frame has its size");
        expect(!std::holds_alternative<switchd::lacp::Unusable>(pdu), "what is sent is well-formed");
        if (std::holds_alternative<Lacpdu>(pdu)) {
            auto &times = sent_[port];
            times.push_back(now_);
            expect(times.size() <= kMostInASecond || now_ - times.front() >= std::chrono::seconds(1),
                   "at most three LACPDUs are sent in a second");
            while (times.size() > kMostInASecond) {
                times.pop_front();
            }
        }
    }

    fuzz::Input &input_;
    Time now_ = std::chrono::hours(1);
    std::map<uint16_t, std::deque<Time>> sent_;
    System system_{kOwn, [this](uint16_t port, std::span<const uint8_t> frame) { take(port, frame); }};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    Bench(input).run();
    return 0;
}
