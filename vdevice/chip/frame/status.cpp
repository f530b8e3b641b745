// Looks a status up. The table itself is generated.
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {
namespace {

constexpr StatusEntry kUnknown{Status::kNotSupported, "unknown", "not a status of the virtual device"};

}  // namespace

const StatusEntry &describe(Status status) {
    for (const StatusEntry &entry : status_table()) {
        if (entry.status == status) {
            return entry;
        }
    }
    return kUnknown;
}

}  // namespace vdevice::chip
