// Egress queues: how many there are, how a port's are scheduled, and how much the port sends. The calls on a port's
// scheduler name front ports by a bit each, the others a chip port.
#include <algorithm>
#include <numeric>
#include <optional>

#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::PortSet;
using chip::SchedulerMode;
using chip::SchedulerSettings;
using chip::Status;
using chip::Switch;

static_assert(NETLINK_QUEUES == chip::kQueues);

/**
 * A weight of 0 leaves that of the queue as it is: who sets the mode hands in zeros only, and does not mean that nobody
 * is to have a share.
 */
void take_weights(chip::QueueWeights &weights, const uint32_t *given) {
    for (size_t queue = 0; queue < weights.size(); ++queue) {
        if (given[queue] != 0) {
            weights[queue] = given[queue];
        }
    }
}

Status check_queue(uint32_t port, uint32_t queue) {
    if (!Switch::has_port(port)) {
        return Status::kNoPort;
    }
    return queue < chip::kQueues ? Status::kOk : Status::kQueueRange;
}

}  // namespace

int32_t Driver::user_cosq_config_set(uint32_t unit, uint32_t zero, uint32_t queues) {
    return on_chip(unit, zero, [&] { return chip_.queue_map().set_queues(queues); });
}

/** A word without a bit is that of an interface which has none. */
std::optional<PortSet> Driver::scheduled_ports(uint32_t port_mask) const {
    const uint32_t words[PortSet::kWords] = {port_mask};
    return port_mask == 0 ? std::nullopt : board_.chip_ports(PortSet::from_words(words));
}

// What is refused does not depend on the port: all of them are set, or none.
int32_t Driver::user_cosq_port_sched_set(uint32_t unit, uint32_t zero, uint32_t port_mask, uint32_t mode,
                                         const uint32_t weights[NETLINK_QUEUES], uint32_t delay) {
    return on_chip(unit, zero, [&] {
        if (weights == nullptr) {
            return Status::kBadArgument;
        }
        const std::optional<PortSet> ports = scheduled_ports(port_mask);
        if (!ports) {
            return Status::kNotFrontPort;
        }
        Status status = Status::kOk;
        ports->for_each([&](int port) {
            SchedulerSettings settings = chip_.queues().port(port).scheduler();
            settings.mode = static_cast<SchedulerMode>(mode);
            settings.delay = delay;
            take_weights(settings.weights, weights);
            status = chip_.set_scheduler(clock_(), port, settings);
        });
        return status;
    });
}

int32_t Driver::user_cosq_port_sched_get(uint32_t unit, uint32_t zero, uint32_t port_mask, uint32_t *mode,
                                         uint32_t weights[NETLINK_QUEUES], uint32_t *delay) {
    return on_chip(unit, zero, [&] {
        if (mode == nullptr || weights == nullptr || delay == nullptr) {
            return Status::kBadArgument;
        }
        const std::optional<PortSet> ports = scheduled_ports(port_mask);
        if (!ports) {
            return Status::kNotFrontPort;
        }
        if (ports->size() != 1) {
            return Status::kBadArgument;
        }
        ports->for_each([&](int port) {
            const SchedulerSettings &settings = chip_.queues().port(port).scheduler();
            *mode = static_cast<uint32_t>(settings.mode);
            std::copy(settings.weights.begin(), settings.weights.end(), weights);
            *delay = settings.delay;
        });
        return Status::kOk;
    });
}

int32_t Driver::user_qos_schedule_set(uint32_t port, uint32_t queue, uint32_t weight, uint32_t /*flags*/) {
    Status status = check_queue(port, queue);
    if (status == Status::kOk) {
        const auto number = static_cast<int>(port);
        SchedulerSettings settings = chip_.queues().port(number).scheduler();
        settings.weights[queue] = weight;
        status = chip_.set_scheduler(clock_(), number, settings);
    }
    return code(status);
}

int32_t Driver::user_qos_schedule_get(uint32_t port, uint32_t queue, uint32_t *weight, uint32_t /*flags*/) {
    if (weight == nullptr) {
        return code(Status::kBadArgument);
    }
    const Status status = check_queue(port, queue);
    if (status == Status::kOk) {
        *weight = chip_.queues().port(static_cast<int>(port)).scheduler().weights[queue];
    }
    return code(status);
}

// Frames of a higher priority have a larger share of the way to the CPU, and none of them all of it.
int32_t Driver::user_qos_cpu_weight_init() {
    SchedulerSettings settings;
    settings.mode = SchedulerMode::kWeighted;
    std::iota(settings.weights.begin(), settings.weights.end(), 1);
    return code(chip_.set_scheduler(clock_(), Switch::kCpuPort, settings));
}

int32_t Driver::user_port_egress_rate_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t rate, uint32_t burst) {
    return on_chip(unit, zero, [&] { return chip_.set_shaper(clock_(), port, {rate, burst}); });
}

int32_t Driver::user_port_egress_rate_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *rate, uint32_t *burst) {
    return on_chip(unit, zero, [&] {
        if (rate == nullptr || burst == nullptr) {
            return Status::kBadArgument;
        }
        if (!Switch::has_port(port)) {
            return Status::kNoPort;
        }
        const chip::RateLimit *shaper = chip_.queues().port(port).shaper();
        *rate = shaper == nullptr ? 0 : shaper->rate;
        *burst = shaper == nullptr ? 0 : shaper->depth;
        return Status::kOk;
    });
}

}  // namespace vdevice::driver
