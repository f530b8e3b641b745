// What would become of a frame.
#pragma once

#include <memory>
#include <vector>

#include "vdevice/chip/account/account.h"

namespace vdevice::chip {

class Explainer {
  public:
    /**
     * The accounts of the frame and of those that it brings back by loopback. It runs on a copy of the tables: they do
     * not change. The port must exist.
     */
    std::vector<Account> explain(const Tables &tables, Time now, int port, Bytes frame);

  private:
    std::unique_ptr<Tables> copy_ = std::make_unique<Tables>();  // too large for a stack
};

}  // namespace vdevice::chip
