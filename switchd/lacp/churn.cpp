// The actor's and the partner's churn machine, which are the same.
#include "switchd/lacp/churn.h"

namespace switchd::lacp {
namespace {

void watch(Churn &churn, Timer &timer, const Info &end, Time now) {
    if (end.has(state::kSynchronization)) {
        churn.state = ChurnState::kNoChurn;
        timer.stop();
    } else if (timer.has_ended(now)) {
        churn.state = ChurnState::kChurn;
        ++churn.count;
    } else if (churn.state != ChurnState::kChurn && !timer.end()) {
        churn.state = ChurnState::kMonitor;
        timer.start(now, kChurnDetectionTime);
    }
}

}  // namespace

void watch_churn(Port &port, Time now) {
    PortStatus &status = port.status;
    if (!status.is_up) {
        status.actor_churn.state = ChurnState::kMonitor;
        status.partner_churn.state = ChurnState::kMonitor;
        port.actor_churn.stop();
        port.partner_churn.stop();
        return;
    }
    watch(status.actor_churn, port.actor_churn, status.actor, now);
    watch(status.partner_churn, port.partner_churn, status.partner, now);
}

}  // namespace switchd::lacp
