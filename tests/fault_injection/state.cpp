// The states of the tables.
#include "tests/fault_injection/state.h"

#include "tests/support/library_test.h"

namespace fault_injection {
namespace {

constexpr uint32_t kPort = 2;

/** The fixture's helpers, for use outside a fixture. */
class Tables : public library_test::LibraryTest {
  public:
    using LibraryTest::set_active;
    using LibraryTest::set_configured;
    using LibraryTest::start_over;
};

std::vector<uint32_t> without_empty(const std::vector<uint32_t> &slots) {
    std::vector<uint32_t> members;
    std::copy_if(slots.begin(), slots.end(), std::back_inserter(members), [](uint32_t slot) { return slot != 0; });
    return members;
}

int32_t note_event(const adp_agg_event_t *event) {
    for (uint32_t trunk = 0; trunk < ADP_AGG_GROUPS; ++trunk) {
        constexpr uint32_t kFirstGroupWord = 16;
        const uint32_t intf = event->word[kFirstGroupWord + trunk];
        if (intf != 0) {
            recording::driver().note("agg_event(group=" + std::to_string(intf & ADP_INTF_INDEX_MASK) + ")");
        }
    }
    return 0;
}

int32_t note_link(uint32_t unit, uint32_t port, uint32_t status) {
    recording::driver().note("link_event(unit=" + std::to_string(unit) + ", port=" + std::to_string(port) +
                             ", status=" + std::to_string(status) + ")");
    return 0;
}

void set_members(const State &state) {
    std::vector<uint8_t> ports;
    std::transform(state.active.begin(), state.active.end(), std::back_inserter(ports),
                   [](uint32_t member) { return static_cast<uint8_t>(physical(member)); });
    Tables::set_active(state.group, ports);
    uint32_t configured = 0;
    for (const uint32_t member : state.configured) {
        configured |= 1U << member;
    }
    Tables::set_configured(state.group, configured);
    agg_manage_intf[state.group - 1] = state.manage;
    for (const uint32_t member : without_empty(state.active)) {
        intf_map_trunk[member] = ADP_AGG_INTF(state.group);
    }
}

}  // namespace

std::vector<uint32_t> State::active_members() const {
    // A list of more is refused whole, and who does not look at that walks empty slots.
    constexpr size_t kMostActive = 8;
    return active.size() > kMostActive ? std::vector<uint32_t>() : without_empty(active);
}

std::vector<uint32_t> State::configured_members() const {
    return without_empty(configured.empty() ? active : configured);
}

uint32_t State::lowest_configured() const {
    return configured.empty() ? 0 : *std::min_element(configured.begin(), configured.end());
}

int32_t State::port() const {
    return who == Who::kPort ? physical(kPort) : -1;
}

bool State::is_plain() const {
    constexpr uint32_t kPlainGroup = 2;
    return who == Who::kPort || group == kPlainGroup;
}

uint32_t State::hold() const {
    return (who == Who::kPort ? kPort : ADP_USER_PORTS + group) - 1;
}

std::span<const State> states() {
    static const State all[] = {
        {"user", Who::kPort, "2", 0, {}, {}, 0},
        {"agg1", Who::kGroup, "agg1", 1, {6}, {}, 6},
        {"agg3", Who::kGroup, "agg2", 2, {3, 5, 7}, {2, 5, 9}, 5},
        {"agg8", Who::kGroup, "agg8", 8, {1, 4, 6, 8, 10, 12, 14, 16}, {3, 4, 7, 9, 11, 13, 15, 17}, 0},
        {"slots", Who::kGroup, "agg4", 4, {2, 0, 11}, {0, 3, 8}, 3},
        {"over", Who::kGroup, "agg5", 5, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {20, 22}, 4},
        {"none", Who::kGroup, "agg3", 3, {}, {}, 0},
        {"nogroup", Who::kNoSuchGroup, "agg9", 0, {}, {}, 0},
        {"foreign", Who::kForeign, "0x20000001", 0, {}, {}, 0},
    };
    return all;
}

int32_t physical(uint32_t user_port) {
    return user_port == 0 ? 0 : static_cast<int32_t>(user_port + library_test::kPortOffset);
}

void bring_up(const State &state) {
    Tables::start_over();
    agg_event_handle = note_event;
    link_event_handle = note_link;
    if (state.group != 0) {
        set_members(state);
    }
}

void take_down() {
    library_test::drop_map();
    library_test::drop_rules();
}

}  // namespace fault_injection
