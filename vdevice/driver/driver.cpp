// Which section is carried out by what.
#include "vdevice/driver/driver.h"

namespace vdevice::driver {

Driver::Driver(chip::Switch &chip, const Board &board, const Clock &clock) : board_{board}, controls_{chip} {
    for (int user_port = 1; user_port <= board.user_ports; ++user_port) {
        const uint32_t speed = Board::max_speed(user_port);
        chip.change_port(*board.chip_port(user_port), [&](chip::Port &port) {
            port.phy = chip::Phy{speed};
            return chip::Status::kOk;
        });
    }
    sections_ = {.ports = ports(chip),
                 .trunks = trunks(chip),
                 .addresses = addresses(chip, clock),
                 .address_deletion = address_deletion(chip),
                 .address_limits = address_limits(chip),
                 .address_table = address_table(chip, clock, records_.journal),
                 .groups = groups(chip, board, controls_),
                 .group_rules = group_rules(chip, controls_),
                 .switch_controls = switch_controls(chip, controls_),
                 .fields = fields(chip),
                 .field_conditions = field_conditions(chip),
                 .field_meters = field_meters(chip, clock),
                 .rates = rates(chip, clock),
                 .queues = queues(chip, board, clock),
                 .priorities = priorities(chip),
                 .spanning_tree = spanning_tree(chip),
                 .spanning_tree_lists = spanning_tree_lists(chip, lists_),
                 .vlans = vlans(chip),
                 .translations = translations(chip),
                 .double_tags = double_tags(chip),
                 .mirroring = mirroring(chip),
                 .statistics = statistics(chip),
                 .registers = registers(chip),
                 .services = services(chip, board, clock, records_)};
}

}  // namespace vdevice::driver
