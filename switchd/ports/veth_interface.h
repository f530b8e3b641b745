// One end of a pair of virtual interfaces; the daemon has a packet socket on the far end.
#pragma once

#include <memory>
#include <string>

#include "switchd/ports/interface.h"
#include "vdevice/io/packet_port.h"

namespace switchd {

class VethInterface final : public Interface {
  public:
    static std::unique_ptr<Interface> make(const PortName &port, const InterfaceSettings &settings,
                                           const std::vector<FoundLink> &links);
    static std::unique_ptr<Interface> adopt(const PortName &port, const FoundLink &far);

    VethInterface(const PortName &port, int index, int far_index, const std::string &far_name);

    int fd() const override { return far_.fd(); }
    bool is_gone() const override;
    void set_carrier(bool on) override;
    void read(ReadRoom &room, const Take &take) override;
    bool write(const vdevice::chip::Frame &frame) override;
    void flush() override { far_.flush(); }

  private:
    void destroy() override;

    int far_index_;
    vdevice::io::PacketPort far_;
};

}  // namespace switchd
