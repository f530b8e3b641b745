// For tests: what the kernel has, and what the chip should have by it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "switchd/mirror/testing/kernel_builder.h"
#include "switchd/mirror/wanted.h"

namespace switchd::test {

inline IntfSet ports(std::initializer_list<uint32_t> intfs) {
    IntfSet set = 0;
    for (const uint32_t intf : intfs) {
        set |= set_of(intf);
    }
    return set;
}

class WantedTest : public testing::Test {
  protected:
    Wanted wanted() const { return wanted_of(k.kernel, k.plan); }
    VlanState vlan(uint16_t vid) const {
        const SwitchState state = wanted().state;
        return state.vlans.contains(vid) ? state.vlans.at(vid) : VlanState{};
    }
    PortSettings port(uint32_t port) const { return wanted().state.ports.at(port); }
    std::vector<std::string> remarks_on(const std::string &subject) const {
        std::vector<std::string> sentences;
        for (const Remark &remark : wanted().remarks) {
            if (remark.subject == subject) {
                sentences.push_back(remark.sentence);
            }
        }
        return sentences;
    }

    KernelBuilder k;
};

}  // namespace switchd::test
