// Network interfaces as cables of the device: pairs are made, and set up to carry frames unchanged.
#pragma once

#include <stdint.h>
#include <map>
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

/**
 * Pairs of interfaces, removed with this object. They are marked: the group of their device's side, which the kernel
 * sets when it makes an interface, is a number of their owner's.
 */
class Cables {
  public:
    Cables() = default;
    /**
     * Takes up the pairs with this mark that are there, hosts on their other ends included, makes the missing ones and
     * removes the others: the caller makes sure that no other owner of the mark lives. Throws an Error, and leaves
     * none, if one cannot be made; above all if an interface without the mark has its name.
     */
    Cables(const std::vector<CablePair> &pairs, uint32_t mark);
    ~Cables();
    Cables(const Cables &) = delete;
    Cables &operator=(const Cables &) = delete;

    /** Whether the pair's other end is in this namespace, under its name. */
    bool has_peer(const CablePair &pair) const;

  private:
    /** Names of the device's sides with those of their peers, as far as these are in this namespace. */
    std::map<std::string, std::string> pairs_;
    uint32_t mark_ = 0;
};

/**
 * Makes an interface carry frames as they are: room for long frames, no offloads that leave checksums or lengths to
 * hardware, and no IPv6 frames of the kernel's own.
 */
void make_transparent(const std::string &name);

/** The machine answers nobody on this interface for addresses of its others, and routes nothing from there. */
void keep_from_machine(const std::string &name);

/** The interface's own frames get their checksums before it takes them, and are no longer than its MTU allows. */
void turn_off_offloads(const std::string &name);

/** Raises or lowers an interface; throws an Error if there is none or no privilege. */
void set_interface_up(const std::string &name, bool up);

}  // namespace vdevice::io
