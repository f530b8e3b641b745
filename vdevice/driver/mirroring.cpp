// Mirror sessions.
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;

class Mirroring : public MirroringCalls {
  public:
    explicit Mirroring(chip::Switch &chip) : chip_{chip} {}

    Status user_mirror_init() override {
        chip_.mirrors().clear();
        return Status::kOk;
    }

    Status user_mirror_port_set(int32_t port, uint32_t session, int32_t destination, uint32_t mode) override {
        return chip_.mirrors().set_port(session, port, destination, mode);
    }

    Status user_set_flow_mirror(uint32_t session, int32_t port) override {
        return chip_.mirrors().set_flow_destination(session, port);
    }

    Status user_set_mirror_disable(uint32_t session, uint32_t value) override {
        return chip_.mirrors().set_disabled(session, value != 0);
    }

    Status user_check_set_mirror_disable(uint32_t session, uint32_t value) override {
        return chip_.mirrors().check_disabled(session, value != 0);
    }

  private:
    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<MirroringCalls> mirroring(chip::Switch &chip) {
    return std::make_unique<Mirroring>(chip);
}

}  // namespace vdevice::driver
