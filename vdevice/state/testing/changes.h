// For tests: every driver call that sets something, with arguments that change a prepared device.
#pragma once

#include <vector>

#include "calls/call_table.h"
#include "vdevice/state/testing/prepared_device.h"

namespace vdevice::state::test {

/** A driver call that changes a prepared device. */
struct Change {
    const char *call;
    int32_t (*make)(PreparedDevice &device);
};

// The name of a call is needed as a text, too.
#define VDEVICE_CHANGE(call, ...)                                                        \
    {                                                                                    \
#call, [](PreparedDevice & device) { return device.driver().call(__VA_ARGS__); } \
    }

std::vector<Change> port_changes();
std::vector<Change> table_changes();
std::vector<Change> rule_changes();
std::vector<Change> all_changes();

/** The calls that a device answers; those that are changes; the others. */
std::vector<calls::CallId> answered_calls();
std::vector<calls::CallId> changing_calls();
std::vector<calls::CallId> other_calls();
bool has_outputs(calls::CallId id);

}  // namespace vdevice::state::test
