// The physical side of a port: speed, duplex, what it advertises to the other end, flow control, crossover. The other
// end of a virtual cable takes whatever is offered, so negotiation always ends with the best that this end advertises.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

constexpr uint32_t kGigabit = 1000;
constexpr uint32_t kTenGigabit = 10000;

enum class Medium : uint32_t { kCopper = 1, kFibre = 2 };

enum class Crossover : uint32_t { kAutomatic = 0, kMdi = 1, kMdix = 2 };

class Phy {
  public:
    /** The speed or duplex that leaves the choice to negotiation. */
    static constexpr uint32_t kAutomaticSpeed = 0;
    static constexpr uint32_t kHalfDuplex = 0;
    static constexpr uint32_t kFullDuplex = 1;

    static constexpr uint32_t kAllSpeeds = 0xF4000000; /**< 10 and 100 in either duplex, 1000 in full duplex */
    static constexpr uint32_t kPauseAbilities = 0x03000000;

    /** A gigabit port has a copper plug, a ten-gigabit port takes fibre. */
    explicit Phy(uint32_t max_speed = kGigabit);

    uint32_t max_speed() const { return max_speed_; }
    Medium medium() const { return is_ten_gigabit() ? Medium::kFibre : Medium::kCopper; }
    bool autoneg() const { return autoneg_; }
    uint32_t abilities() const { return abilities_; }

    /** @name In effect: the best advertised ability while negotiation is on, else the setting */
    /** @{ */
    uint32_t speed() const;
    bool full_duplex() const;
    bool pause() const;
    /** @} */

    /** @name As set: in effect while nothing is negotiated */
    /** @{ */
    uint32_t fixed_speed() const { return speed_; }
    bool fixed_full_duplex() const { return full_duplex_; }
    bool fixed_pause() const { return pause_; }
    /** @} */

    /** A fixed speed or duplex turns negotiation off, an automatic one turns it on. */
    Status set_speed(uint32_t speed);
    Status set_duplex(uint32_t duplex);
    void set_autoneg(bool on) { autoneg_ = on; }
    /** The whole word is kept; the bits of speeds and pause have a meaning. */
    void set_abilities(uint32_t abilities) { abilities_ = abilities; }
    void set_pause(bool transmit, bool receive) { pause_ = transmit || receive; }

    /** Refused on fibre, which has no pairs to cross. */
    Status set_crossover(uint32_t crossover);
    Crossover crossover() const { return crossover_; }

  private:
    struct Ability {
        uint32_t bit;
        uint32_t speed;
        bool full_duplex;
    };
    static const Ability kAbilities[];

    bool is_ten_gigabit() const { return max_speed_ == kTenGigabit; }
    /** The best ability that is advertised, or null. */
    const Ability *best_advertised() const;
    /** A ten-gigabit port negotiates no speed: it runs at the one that was set. */
    const Ability *negotiated() const { return autoneg_ && !is_ten_gigabit() ? best_advertised() : nullptr; }

    uint32_t max_speed_;
    uint32_t speed_;
    uint32_t abilities_;
    Crossover crossover_ = Crossover::kAutomatic;
    bool full_duplex_ = true;
    bool autoneg_ = true;
    bool pause_ = false;
};

}  // namespace vdevice::chip
