// For tests: a chip on the board that devices have, and the facts that an account of a frame states.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "vdevice/chip/testing/field_fixture.h"

namespace vdevice::inspect::test {

/** The chip of the tests of its parts, without being one of them. Its ports A, B and C are the user ports 1, 2 and 26.
 */
class Chip : public chip::test::FieldRulesTest {
  public:
    using FieldRulesTest::add_rule;
    using FieldRulesTest::change;
    using FieldRulesTest::rule;
    using FieldRulesTest::send;

    chip::Switch *operator->() { return &chip_; }
    void make_trunk(const std::vector<int> &members);

  private:
    void TestBody() override {}
};

/** Of each step "step.member=value"; of each port and mirror "port 2: word", "mirror 2: word". */
using Facts = std::set<std::string>;

/** What explain says of the frame, and what follow says when it is sent. They must be the same, also as text. */
Facts explained(Chip &chip, int port, const chip::test::Octets &frame);

/** What a chip is set to, a frame for it, and what must be said of it. */
struct Case {
    const char *name;
    std::function<void(Chip &)> prepare;
    int port;
    chip::test::Octets frame;
    Facts facts;
};

inline void nothing(Chip & /*chip*/) {}
/** Station 2 is on the port. */
void put_two(Chip &chip, int port);
inline const chip::test::Octets kToTwo =
    chip::test::operator+(chip::test::operator+(chip::test::station(2), chip::test::station(1)), chip::test::kPayload);

std::vector<Case> ingress_cases();
std::vector<Case> forwarding_cases();
std::vector<Case> egress_cases();

}  // namespace vdevice::inspect::test
