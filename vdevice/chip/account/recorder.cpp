// Copies are told before their frame has passed; a queued one that leaves later belongs to no frame on its way.
#include "vdevice/chip/account/recorder.h"

#include <utility>

namespace vdevice::chip {

void Recorder::begun() {
    is_recording_ = is_listening();
    copies_.clear();
}

void Recorder::passed(const Passage &frame) {
    if (!std::exchange(is_recording_, false)) {
        unheard(frame);
    } else if (wants(frame, copies_)) {
        tell(account_of(tables_, frame, std::exchange(copies_, {})));
    }
}

void Recorder::note(int port, const Frame &copy, const Dispatch &dispatch, Fate fate, Lost reason) {
    if (is_recording_) {
        copies_.push_back(copy_of(tables_, port, copy, dispatch, fate));
        copies_.back().lost = reason;
    }
}

void Recorder::left(int port, const Frame &copy, const Dispatch &dispatch) {
    note(port, copy, dispatch, Fate::kSent, Lost{});
}

void Recorder::queued(int port, const Frame &copy, const Dispatch &dispatch) {
    note(port, copy, dispatch, Fate::kQueued, Lost{});
}

void Recorder::lost(int port, const Frame &copy, const Dispatch &dispatch, Lost reason) {
    note(port, copy, dispatch, Fate::kLost, reason);
}

}  // namespace vdevice::chip
