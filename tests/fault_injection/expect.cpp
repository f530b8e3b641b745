// What a plan comes to when one of its calls fails.
#include <algorithm>
#include <utility>

#include "calls/call_table.h"
#include "tests/fault_injection/plan.h"

namespace fault_injection {
namespace {

/** Follows a plan call by call. */
class Walk {
  public:
    explicit Walk(const std::optional<FailingCall> &failing) : failing_(failing) {}

    void follow(const Plan &plan, bool is_top) {
        for (const Item &item : plan) {
            if (ended_ || (!until_.empty() && item.name == until_)) {
                break;
            }
            const auto left_out = std::find(without_.begin(), without_.end(), item.name);
            if (is_top && left_out != without_.end()) {
                without_.erase(left_out);
                ++number_;
                continue;
            }
            take(item, is_top);
        }
    }

    [[nodiscard]] Expected outcome() const { return outcome_; }

  private:
    void take(const Item &item, bool is_top) {
        switch (item.kind) {
            case Item::Kind::kCall:
                return call(item, is_top);
            case Item::Kind::kChanges:
                changed_ = &item;
                return;
            case Item::Kind::kWrites:
                return write(item.writes);
            case Item::Kind::kReturns:
                // The status of a failure that the function goes on after stays.
                outcome_.status = status_is_set_ ? outcome_.status : item.number;
                status_is_set_ = status_is_set_ || !is_top;
                return;
            case Item::Kind::kKeeps:
                outcome_.kept_memory = item.number;
                return;
            case Item::Kind::kOpens:
                outcome_.open_descriptors = item.number;
                return;
            case Item::Kind::kRules:
                outcome_.rules = item.rules;
                return;
        }
    }

    void call(const Item &item, bool is_top) {
        const bool is_changed = changed_ != nullptr && changed_->name == item.name;
        outcome_.calls.push_back({&item, is_changed ? std::exchange(changed_, nullptr) : nullptr});
        if (fails(item, is_top)) {
            const bool is_other = failing_->result >= 0 && item.branches.size() > 1;
            fail(item.branches[is_other ? 1 : 0]);
            return failing_->writes ? write(item.writes) : void();
        }
        if (!item.branches.empty() && item.branches.front().policy.status == Policy::Status::kOwn &&
            !item.branches.front().policy.ends) {
            status_is_set_ = false;
            outcome_.status = 0;
        }
        write(item.writes);
    }

    bool fails(const Item &item, bool is_top) {
        if (!failing_ || !item.can_fail()) {
            return false;
        }
        if (failing_->number == FailingCall::kEvery) {
            return calls::find_call(item.name).has_value();
        }
        return is_top && failing_->number == number_++;
    }

    void fail(const Branch &branch) {
        const Policy &policy = branch.policy;
        if (policy.status != Policy::Status::kKept) {
            outcome_.status = policy.status == Policy::Status::kFixed ? policy.fixed : failing_->result;
            status_is_set_ = true;
        }
        follow(branch.then, false);
        without_ = policy.without;
        if (policy.ends) {
            until_ = policy.until;
            ended_ = until_.empty();
        }
    }

    void write(const std::vector<Assignment> &assignments) {
        outcome_.writes.insert(outcome_.writes.end(), assignments.begin(), assignments.end());
    }

    std::optional<FailingCall> failing_;
    Expected outcome_;
    size_t number_ = 0;
    bool ended_ = false;
    bool status_is_set_ = false;
    std::string until_;
    const Item *changed_ = nullptr;
    std::vector<std::string> without_;
};

}  // namespace

Expected expect(const Plan &plan, const std::optional<FailingCall> &failing) {
    Walk walk(failing);
    walk.follow(plan, true);
    return walk.outcome();
}

std::vector<const Item *> failing_calls(const Plan &plan) {
    std::vector<const Item *> calls;
    for (const Item &item : plan) {
        if (item.can_fail()) {
            calls.push_back(&item);
        }
    }
    return calls;
}

}  // namespace fault_injection
