/**
 * @file plan.h
 * What a row says must happen in one state of the tables: calls in order, each with what its failure does, and what is
 * written on the way. docs/testing.md explains how plans are written.
 */
#pragma once

#include <stdint.h>
#include <optional>
#include <string>
#include <vector>

#include "tests/fault_injection/row.h"
#include "tests/fault_injection/state.h"

namespace fault_injection {

/** What the failure of a call does to the function that made it. */
struct Policy {
    enum class Status { kKept, kOwn, kFixed, kOred };
    bool ends = false; /**< nothing more is called */
    Status status = Status::kKept;
    int64_t fixed = 0;
    std::string until{};                /**< it ends only where this call would come next */
    std::vector<std::string> without{}; /**< the next call of each of these names is not made */
};

/** A parameter or an exported table, or a part of one, and the value in adpsh's notation. */
struct Assignment {
    std::string target;
    std::string value;

    bool operator==(const Assignment &) const = default;
};

struct Branch;

struct Item {
    enum class Kind { kCall, kChanges, kWrites, kReturns, kKeeps, kOpens, kRules };
    Kind kind = Kind::kCall;
    std::string name{};                  /**< of the call, or of the next call that is made otherwise */
    std::vector<Assignment> arguments{}; /**< of the call, as the trace must show them */
    std::vector<Branch> branches;     /**< of a call that can fail: for negative results, for others if that differs */
    std::vector<Assignment> writes{}; /**< of a call: only when it succeeds */
    int64_t number = 0;
    std::vector<std::string> rules{};

    /** A call that can fail: of the driver or a service, of the system, or an allocation. */
    [[nodiscard]] bool can_fail() const;
};

/** What comes of a failure, and what is done only after it. */
struct Branch {
    Policy policy{};
    std::vector<Item> then{};
};

using Plan = std::vector<Item>;

/** The row's plan for a state, or nothing when the row says nothing of it. */
std::optional<Plan> plan_of(const Family &family, const Row &row, const State &state);

/** The plan for when every call of the driver and the services fails: the same, unless the clause `all failing` has
 * one. */
std::optional<Plan> plan_without_driver(const Family &family, const Row &row, const State &state);

/** A call that a run must show. */
struct ExpectedCall {
    const Item *item;
    const Item *changed; /**< has its arguments where they differ from the undisturbed run's, else null */

    [[nodiscard]] const std::vector<Assignment> &arguments() const {
        return (changed != nullptr ? changed : item)->arguments;
    }
};

/** What a run must show. */
struct Expected {
    std::vector<ExpectedCall> calls{};
    int64_t status = 0;
    std::vector<Assignment> writes{};
    std::optional<std::vector<std::string>> rules{};
    int64_t kept_memory = 0;
    int64_t open_descriptors = 0;
};

/** The call of a plan that fails, and how. */
struct FailingCall {
    /** In place of a number: every call of the driver and the services. */
    static constexpr size_t kEvery = SIZE_MAX;

    size_t number;
    int64_t result;
    bool writes; /**< what a success writes is written all the same */
};

/** The run in which this call, if any, fails. */
Expected expect(const Plan &plan, const std::optional<FailingCall> &failing);

/** The calls of a plan that can fail, in order. */
std::vector<const Item *> failing_calls(const Plan &plan);

}  // namespace fault_injection
