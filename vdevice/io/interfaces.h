// Network interfaces as cables of the device: pairs are made, and set up to carry frames unchanged.
#pragma once

#include <string>
#include <vector>

namespace vdevice::io {

/** Room for the longest jumbo frame that the device's hosts use. */
constexpr int kMtu = 9300;

/** Two ends of a cable: the device's and its peer's. */
struct CablePair {
    std::string device_side;
    std::string peer_side;
};

/** Pairs of interfaces, removed with this object. */
class Cables {
  public:
    Cables() = default;
    /** Makes all pairs; throws an Error, and leaves none, if one cannot be made. */
    explicit Cables(std::vector<CablePair> pairs);
    ~Cables();
    Cables(const Cables &) = delete;
    Cables &operator=(const Cables &) = delete;

  private:
    std::vector<CablePair> pairs_;
};

/**
 * Makes an interface carry frames as they are: room for long frames, no offloads that leave checksums or lengths to
 * hardware, and no IPv6 frames of the kernel's own.
 */
void make_transparent(const std::string &name);

/** Raises or lowers an interface; throws an Error if there is none or no privilege. */
void set_interface_up(const std::string &name, bool up);

}  // namespace vdevice::io
