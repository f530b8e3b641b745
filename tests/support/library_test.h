/**
 * @file library_test.h
 * The start of every unit test of the library: cleared tables, the default board's port map, a fresh recording driver.
 */
#pragma once

#include <adp/adp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdint.h>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "src/core/group_tables.h"
#include "tests/support/library_state.h"
#include "tests/support/recording_driver.h"

namespace library_test {

/** Fills the port map of the default board. */
inline void make_default_map(uint32_t user_ports = kUserPorts) {
    ASSERT_TRUE(fill_default_map(user_ports));
}

class LibraryTest : public ::testing::Test {
  protected:
    void SetUp() override { start_over(); }

    void TearDown() override {
        drop_map();
        drop_rules();
    }

    /** Also for a test that runs an operation several times, each on cleared tables. */
    static void start_over() {
        clear_tables();
        make_default_map();
    }

    static recording::Driver &driver() { return recording::driver(); }

    /** Gives a group its active members as physical ports; 0 is the CPU port, which reads as an empty slot. */
    static void set_active(uint32_t group, const std::vector<uint8_t> &ports) {
        agg_info[group - 1].count = static_cast<int32_t>(ports.size());
        std::copy(ports.begin(), ports.end(), agg_info[group - 1].ports);
    }

    static void set_configured(uint32_t group, uint32_t word0, uint32_t word1 = 0) {
        agg_standby_members[group - 1][0] = word0;
        agg_standby_members[group - 1][1] = word1;
    }
};

}  // namespace library_test
