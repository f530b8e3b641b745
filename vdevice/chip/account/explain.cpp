// Lets the frame go its way through a copy of the chip.
#include "vdevice/chip/account/explain.h"

#include <memory>
#include <utility>

#include "vdevice/chip/account/recorder.h"
#include "vdevice/chip/pipeline/pipeline.h"

namespace vdevice::chip {
namespace {

class NoWire final : public Sink {
  public:
    void transmit(int /*port*/, const Frame & /*frame*/) override {}
};

class Accounts final : public Recorder {
  public:
    using Recorder::Recorder;
    std::vector<Account> take() { return std::move(accounts_); }

  private:
    void tell(Account account) override { accounts_.push_back(std::move(account)); }

    std::vector<Account> accounts_;
};

}  // namespace

std::vector<Account> explain(const Tables &tables, Time now, int port, Bytes frame) {
    const auto copy = std::make_unique<Tables>(tables);  // too large for a stack
    NoWire wire;
    Pipeline pipeline{*copy, wire};
    Accounts accounts{*copy};
    pipeline.egress().set_watcher(&accounts);
    pipeline.receive(now, port, frame);
    return accounts.take();
}

}  // namespace vdevice::chip
