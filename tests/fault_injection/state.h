/**
 * @file state.h
 * The states of the tables in which every function is run.
 *
 * Active and configured members differ wherever a group has both, and a group's management interface is not its first
 * member, so a call that asks for the wrong ones is found. A member 0 is an empty slot.
 */
#pragma once

#include <stdint.h>
#include <span>
#include <string>
#include <vector>

namespace fault_injection {

enum class Who { kPort, kGroup, kNoSuchGroup, kForeign };

struct State {
    const char *name;
    Who who;
    const char *interface; /**< as adpsh writes it */
    uint32_t group;        /**< 0 for an interface that is none */
    std::vector<uint32_t> active;
    std::vector<uint32_t> configured; /**< empty: nothing is configured, so the active ones count */
    uint32_t manage;

    /** The members that are not empty slots, as the contract's member lists give them. */
    [[nodiscard]] std::vector<uint32_t> active_members() const;
    [[nodiscard]] std::vector<uint32_t> configured_members() const;
    [[nodiscard]] uint32_t lowest_configured() const;
    /** The physical port of the interface itself, -1 for anything but a user port. */
    [[nodiscard]] int32_t port() const;
    /** Whether functions without an interface are run in it: in two states, one without groups and one with a group. */
    [[nodiscard]] bool is_plain() const;
    /** Where the interface's hold stands in its table: user ports 1 to 26, then the groups. */
    [[nodiscard]] uint32_t hold() const;
};

std::span<const State> states();

/** The physical port of a user port; 0 is the CPU's. */
int32_t physical(uint32_t user_port);

/** Brings every exported table into the state, with nothing scripted and nothing recorded. */
void bring_up(const State &state);
/** Frees what bring_up() and the calls since have allocated. */
void take_down();

}  // namespace fault_injection
