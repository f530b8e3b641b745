// A group's trunk in the chip, as libadp's calls make it.
#pragma once

#include <adp/agg.h>
#include <stdint.h>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace switchd {

class Trunk {
  public:
    explicit Trunk(uint32_t group) : intf_{ADP_AGG_INTF(group)} {}

    /** Makes the trunk. One that is there already, a killed predecessor's, goes on as it is until members are added. */
    void create();
    /** Tells the library which ports are configured, and by what a frame's member is chosen, where that has changed. */
    void configure(const std::set<uint32_t> &configured, uint32_t balance);
    /** Adds ports that are in no trunk; the members never become more than the chip takes. */
    bool add(const std::vector<uint32_t> &ports);
    bool remove(const std::vector<uint32_t> &ports);
    /** A member's link has changed. */
    void change_link(uint32_t port, bool is_up);
    /** Empties a predecessor's trunk, whose members nobody knows. */
    void clear_strangers();
    bool destroy();

    const std::set<uint32_t> &members() const { return members_; }
    /** What the chip has refused, in a sentence; empty if nothing. */
    std::string fault() const;

  private:
    /** Notes whether a call has succeeded. */
    bool did(std::string_view what, adp_status_t result);
    /** Makes the trunk with what is configured; none of its members is known in the library then. */
    void make_again();
    void set_balance();

    adp_intf_t intf_;
    bool has_strangers_ = false; /**< it was there before, and no member has been added */
    std::set<uint32_t> members_;
    std::set<uint32_t> configured_;
    uint32_t balance_ = 0; /**< 0: not set yet */
    std::map<std::string_view, adp_status_t> failures_;
};

}  // namespace switchd
