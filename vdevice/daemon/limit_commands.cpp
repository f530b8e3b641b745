// The command that shows storm limits and ingress limits.
#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/daemon/command.h"

namespace vdevice {
namespace {

using chip::Limiter;
using chip::PortStorm;
using chip::StormType;
using chip::StormTypeEntry;
using nlohmann::json;

const char *name(chip::Counting counting) {
    return counting == chip::Counting::kFrames ? "frames" : "octets";
}

void add_limiter(json &row, const Limiter &limiter, chip::Time now) {
    row["rate"] = limiter.limit().rate;
    row["burst"] = limiter.limit().depth;
    row["counts"] = name(limiter.counting());
    row["passed"] = limiter.passed();
    row["dropped"] = limiter.dropped();
    if (const auto bucket = limiter.bucket_at(now)) {
        row["depth"] = bucket->depth();
        row["level"] = bucket->level();
    }
}

/** Something about the type is not as at power-on. */
bool is_worth_a_row(const PortStorm &storm, StormType type) {
    const PortStorm::Kind &kind = storm.of(type);
    return kind.limiter.limit().rate != 0 || !kind.enabled || kind.exceeded ||
           (type != StormType::kJoint && !storm.is_in_joint(type));
}

void add_storm_rows(json &rows, const Device &device, int number) {
    const PortStorm &storm = device.chip().port(number).storm;
    for (const StormTypeEntry &entry : chip::kStormTypeTable) {
        if (is_worth_a_row(storm, entry.type)) {
            const PortStorm::Kind &kind = storm.of(entry.type);
            json row = {{"port", user_number(device, number)},
                        {"type", entry.name},
                        {"enabled", kind.enabled},
                        {"in_joint", storm.is_in_joint(entry.type)},
                        {"exceeded", kind.exceeded}};
            add_limiter(row, kind.limiter, device.now());
            rows.push_back(std::move(row));
        }
    }
}

json counting_of(const Device &device) {
    json modes = json::object();
    for (const StormTypeEntry &entry : chip::kStormTypeTable) {
        modes[entry.name] = name(device.chip().storm_counting(entry.type));
    }
    return modes;
}

}  // namespace

json show_storm(Device &device, const json & /*request*/) {
    json storm = json::array();
    json ingress = json::array();
    for (int number = 0; number < chip::Switch::kPorts; ++number) {
        if (device.wire(number) == nullptr) {
            continue;
        }
        add_storm_rows(storm, device, number);
        const Limiter &policer = device.chip().port(number).policer;
        if (policer.limit().rate != 0) {
            json row = {{"port", user_number(device, number)}};
            add_limiter(row, policer, device.now());
            ingress.push_back(std::move(row));
        }
    }
    // With the time of this reading two of them give a rate, however late they are asked for.
    return {{"storm", storm}, {"ingress", ingress}, {"counting", counting_of(device)}, {"time", seconds(device.now())}};
}

}  // namespace vdevice
