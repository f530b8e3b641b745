// A TAP interface: its frames are read and written on a descriptor, one with each call.
#pragma once

#include <memory>
#include <utility>

#include "switchd/ports/interface.h"

namespace switchd {

class TapInterface final : public Interface {
  public:
    /** Whether this system and this user may have one: another kind is used where not. */
    static bool is_possible();
    static std::unique_ptr<Interface> make(const PortName &port, const InterfaceSettings &settings);
    static std::unique_ptr<Interface> adopt(const PortName &port, const FoundLink &own);
    /** Nothing if the kept descriptor's interface is gone. */
    static std::unique_ptr<Interface> take_over(const PortName &port, const std::vector<FoundLink> &links,
                                                vdevice::UniqueFd kept);

    TapInterface(const PortName &port, int index, vdevice::UniqueFd fd) : Interface{port, index}, fd_{std::move(fd)} {}

    int fd() const override { return fd_.get(); }
    bool is_gone() const override;
    void set_carrier(bool on) override;
    void read(ReadRoom &room, const Take &take) override;
    bool write(const vdevice::chip::Frame &frame) override;
    int kept_fd() const override { return fd_.get(); }

  private:
    void destroy() override;

    vdevice::UniqueFd fd_;
};

}  // namespace switchd
