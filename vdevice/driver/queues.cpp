// Egress queues: how many there are, the queue of a priority, and how a port's are scheduled; and what start-up sets of
// queues and priorities. The calls on a port's scheduler name front ports by a bit each, the others a chip port.
#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"

namespace vdevice::driver {
namespace {

using chip::PortSet;
using chip::SchedulerMode;
using chip::SchedulerSettings;
using chip::Status;
using chip::Switch;

static_assert(NETLINK_QUEUES == chip::kQueues);

/** In the place of a port's queue: the port has no row of its own any more. */
constexpr uint32_t kChipsQueue = 0xFFFFFFFF;

/** A weight of 0 leaves that of the queue as it is: setting the mode comes with eight zeros, and takes no share away.
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

class Queues : public QueuesCalls {
  public:
    Queues(Switch &chip, const Board &board, Clock clock) : chip_{chip}, board_{board}, clock_{std::move(clock)} {}

    Status user_cosq_config_set(uint32_t queues) override { return chip_.queue_map().set_queues(queues); }

    Status user_cosq_mapping_set(uint32_t priority, uint32_t queue) override {
        return chip_.queue_map().set(priority, queue);
    }

    Status user_cosq_mapping_get(uint32_t priority, uint32_t &queue) override {
        if (priority >= chip::kPriorities) {
            return Status::kBadArgument;
        }
        queue = chip_.queue_map().queue_of(priority);
        return Status::kOk;
    }

    Status user_cosq_port_mapping_set(int32_t port, uint32_t priority, uint32_t queue) override {
        if (!Switch::has_port(port)) {
            return Status::kNoPort;
        }
        if (queue != kChipsQueue || priority >= chip::kPriorities) {
            return chip_.queue_map().set(port, priority, queue);
        }
        chip_.queue_map().clear(port, priority);
        return Status::kOk;
    }

    Status user_cosq_port_mapping_get(int32_t port, uint32_t priority, uint32_t &queue) override {
        if (!Switch::has_port(port)) {
            return Status::kNoPort;
        }
        if (priority >= chip::kPriorities) {
            return Status::kBadArgument;
        }
        queue = chip_.queue_map().queue_of(port, priority);
        return Status::kOk;
    }

    // What is refused does not depend on the port: all of them are set, or none.
    Status user_cosq_port_sched_set(uint32_t port_mask, uint32_t mode, const uint32_t *weights,
                                    uint32_t delay) override {
        const std::optional<PortSet> ports = scheduled_ports(port_mask);
        if (!ports) {
            return Status::kNotFrontPort;
        }
        Status status = Status::kOk;
        ports->for_each([&](int port) {
            SchedulerSettings settings = scheduler_of(port);
            settings.mode = static_cast<SchedulerMode>(mode);
            settings.delay = delay;
            take_weights(settings.weights, weights);
            status = chip_.set_scheduler(clock_(), port, settings);
        });
        return status;
    }

    Status user_cosq_port_sched_get(uint32_t port_mask, uint32_t &mode, uint32_t *weights, uint32_t &delay) override {
        const std::optional<PortSet> ports = scheduled_ports(port_mask);
        if (!ports) {
            return Status::kNotFrontPort;
        }
        if (ports->size() != 1) {
            return Status::kBadArgument;
        }
        ports->for_each([&](int port) {
            const SchedulerSettings &settings = scheduler_of(port);
            mode = static_cast<uint32_t>(settings.mode);
            std::copy(settings.weights.begin(), settings.weights.end(), weights);
            delay = settings.delay;
        });
        return Status::kOk;
    }

    Status user_qos_schedule_set(uint32_t port, uint32_t queue, uint32_t weight, uint32_t /*flags*/) override {
        const Status status = check_queue(port, queue);
        if (status != Status::kOk) {
            return status;
        }
        SchedulerSettings settings = scheduler_of(static_cast<int>(port));
        settings.weights[queue] = weight;
        return chip_.set_scheduler(clock_(), static_cast<int>(port), settings);
    }

    Status user_qos_schedule_get(uint32_t port, uint32_t queue, uint32_t &weight, uint32_t /*flags*/) override {
        const Status status = check_queue(port, queue);
        if (status == Status::kOk) {
            weight = scheduler_of(static_cast<int>(port)).weights[queue];
        }
        return status;
    }

    Status user_qos_default_cos_src_init() override {
        chip_.priority_rules().defaults_to_port = true;
        return Status::kOk;
    }

    // An inner tag's priority has one source on this chip, the inner tag itself.
    Status user_qos_remark_inner_tag_src_init() override { return Status::kOk; }

    Status user_qos_trust_sel_group_init() override {
        Switch::all_ports().for_each(
            [&](int port) { set_port(chip_, port, [](chip::Port &state) { state.trust = chip::Trust::kDot1p; }); });
        return Status::kOk;
    }

    // Frames of a higher priority have a larger share of the way to the CPU, and none of them all of it.
    Status user_qos_cpu_weight_init() override {
        SchedulerSettings settings;
        settings.mode = SchedulerMode::kWeighted;
        std::iota(settings.weights.begin(), settings.weights.end(), 1);
        return chip_.set_scheduler(clock_(), Switch::kCpuPort, settings);
    }

    Status user_qos_pri_queue_map_set(uint32_t priority, uint32_t queue) override {
        return user_cosq_mapping_set(priority, queue);
    }

    Status user_qos_pri_queue_map_get(uint32_t priority, uint32_t &queue) override {
        return user_cosq_mapping_get(priority, queue);
    }

  private:
    /** Nothing for a word without a bit, which is that of an interface that has none. */
    std::optional<PortSet> scheduled_ports(uint32_t port_mask) const {
        const uint32_t words[PortSet::kWords] = {port_mask};
        return port_mask == 0 ? std::nullopt : board_.chip_ports(PortSet::from_words(words));
    }

    const SchedulerSettings &scheduler_of(int port) const { return chip_.queues().port(port).scheduler(); }

    Switch &chip_;
    Board board_;
    Clock clock_;
};

}  // namespace

std::unique_ptr<QueuesCalls> queues(Switch &chip, const Board &board, Clock clock) {
    return std::make_unique<Queues>(chip, board, std::move(clock));
}

}  // namespace vdevice::driver
