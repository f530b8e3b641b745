// Lets the frame go its way through a copy of the chip.
#include "vdevice/chip/account/explain.h"

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

// The copy is made into the last one, which spares the kernel its pages.
std::vector<Account> Explainer::explain(const Tables &tables, Time now, int port, Bytes frame) {
    *copy_ = tables;
    NoWire wire;
    Pipeline pipeline{*copy_, wire};
    pipeline.depart(now);
    Accounts accounts{*copy_};
    pipeline.egress().set_watcher(&accounts);
    pipeline.receive(now, port, frame);
    return accounts.take();
}

}  // namespace vdevice::chip
