// Driver calls of a recording, made again without the library.
#include "tools/adptrace/replay/driver_only.h"

#include "calls/json_memory.h"

namespace adptrace::replay {

bool DriverReplay::is_played(const Call &call) const {
    const bool is_drivers_own = call.within != kNone && recording().calls()[call.within].kind == Call::Kind::kImported;
    return call.kind == Call::Kind::kImported && !is_drivers_own;
}

void DriverReplay::play(size_t index) {
    const Call &call = recording().calls()[index];
    try {
        ask_again(call);
    } catch (const calls::BadValue &error) {
        stop(call, error.what());
    }
}

}  // namespace adptrace::replay
