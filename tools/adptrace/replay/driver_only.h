/**
 * @file driver_only.h
 * Makes the driver calls of a process of a recording again, and no others: so a device comes to the state of the
 * recorded one.
 */
#pragma once

#include "tools/adptrace/replay/player.h"

namespace adptrace::replay {

class DriverReplay final : public Player {
  public:
    using Player::Player;

  private:
    [[nodiscard]] bool is_played(const Call &call) const override;
    void play(size_t index) override;
};

}  // namespace adptrace::replay
