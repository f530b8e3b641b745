// The registers behind the general-purpose pins.
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Status;

class Registers : public RegistersCalls {
  public:
    explicit Registers(chip::Switch &chip) : chip_{chip} {}

    Status user_pci_read(uint32_t address, uint32_t &value) override { return chip_.gpio().read(address, value); }

    Status user_pci_write(uint32_t address, const uint32_t &value) override {
        return chip_.gpio().write(address, value);
    }

  private:
    chip::Switch &chip_;
};

}  // namespace

std::unique_ptr<RegistersCalls> registers(chip::Switch &chip) {
    return std::make_unique<Registers>(chip);
}

}  // namespace vdevice::driver
