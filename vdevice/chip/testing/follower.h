// For tests: keeps the accounts of frames that pass.
#pragma once

#include <utility>
#include <vector>

#include "vdevice/chip/account/recorder.h"

namespace vdevice::chip::test {

class Follower final : public Recorder {
  public:
    using Recorder::Recorder;
    /** Since the last call. */
    std::vector<Account> take() { return std::exchange(accounts_, {}); }

  private:
    void tell(Account account) override { accounts_.push_back(std::move(account)); }

    std::vector<Account> accounts_;
};

}  // namespace vdevice::chip::test
