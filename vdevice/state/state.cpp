// Puts the parts together.
#include "vdevice/state/state.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "vdevice/state/parts.h"

namespace vdevice::state {
namespace {

using nlohmann::json;

constexpr const char *kBoard = "board";
constexpr const char *kUserPorts = "user_ports";
constexpr const char *kFirstPort = "first_port";

/** For a chip without a device around it. */
class Nowhere : public chip::Sink {
  public:
    void transmit(int /*port*/, const chip::Frame & /*frame*/) override {}
    void port_changed(int /*port*/) override {}
    void departure_changed() override {}
};

}  // namespace

json state_of(const chip::Switch &chip, const driver::Driver &driver) {
    const Source source{chip, driver};
    const driver::Board &board = driver.board();
    return {{kFormMember, kForm},
            {kBoard, {{kUserPorts, board.user_ports}, {kFirstPort, board.first_port}}},
            {"ports", ports_of(source)},
            {"vlans", vlans_of(source)},
            {"default_vlan", chip.vlans().default_vid()},
            {"addresses", addresses_of(source)},
            {"address_age", chip.macs().age_time().count()},
            {"learning_limits", limits_of(source)},
            {"groups", groups_of(source)},
            {"trunks", trunks_of(source)},
            {"spanning_tree", spanning_tree_of(source)},
            {"mirrors", mirrors_of(source)},
            {"tags", tags_of(source)},
            {"priorities", priorities_of(source)},
            {"fields", fields_of(source)},
            {"controls", controls_of(source)},
            {"open_lists", lists_of(source)},
            {"trace", driver.trace()},
            {kRunning, running_of(source)}};
}

json power_on_state(const json &state) {
    const json &board = state.at(kBoard);
    Nowhere sink;
    const auto chip = std::make_unique<chip::Switch>(sink);
    const driver::Driver driver{
        *chip, {board.at(kUserPorts).get<int>(), board.at(kFirstPort).get<int>()}, [] { return chip::Time{}; }};
    return state_of(*chip, driver);
}

}  // namespace vdevice::state
