// Hashes frames and keeps the hashes for a while.
#include "switchd/frames/forwarded_frames.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "vdevice/chip/frame/ip_header.h"

namespace switchd {
namespace {

namespace chip = vdevice::chip;
using chip::Bytes;

/** SipHash-1-3 (Aumasson, Bernstein): short, and without its key nobody finds two texts of one hash. */
class SipHash {
  public:
    explicit SipHash(const HashKey &key)
        : v0_{key[0] ^ 0x736F6D6570736575},
          v1_{key[1] ^ 0x646F72616E646F6D},
          v2_{key[0] ^ 0x6C7967656E657261},
          v3_{key[1] ^ 0x7465646279746573} {}

    void add(uint64_t word) {
        v3_ ^= word;
        mix();
        v0_ ^= word;
    }
    /** Whole words, then the rest in one; the length keeps texts apart that differ by zeros at their end. */
    void add(Bytes octets) {
        const size_t length = octets.size();
        while (octets.size() >= sizeof(uint64_t)) {
            add(word_of(octets.first(sizeof(uint64_t))));
            octets = octets.subspan(sizeof(uint64_t));
        }
        add(word_of(octets));
        add(uint64_t{length});
    }
    uint64_t result() {
        v2_ ^= 0xFF;
        mix();
        mix();
        mix();
        return v0_ ^ v1_ ^ v2_ ^ v3_;
    }

  private:
    /** In this machine's order: a hash leaves no machine. */
    static uint64_t word_of(Bytes octets) {
        uint64_t word = 0;
        if (!octets.empty()) {
            std::memcpy(&word, octets.data(), octets.size());
        }
        return word;
    }

    void mix() {
        v0_ += v1_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v3_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ += v3_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ += v1_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v2_ = std::rotl(v2_, 32);
    }

    uint64_t v0_;
    uint64_t v1_;
    uint64_t v2_;
    uint64_t v3_;
};

/** As an IP packet says; 0 if it is none, or does not know. */
size_t packet_bytes(uint16_t type, Bytes packet) {
    if (type == chip::kTypeIpv4 && chip::is_ipv4(packet)) {
        return chip::read16(packet, chip::kIpv4LengthAt);
    }
    if (type == chip::kTypeIpv6 && chip::is_ipv6(packet)) {
        const size_t rest = chip::read16(packet, chip::kIpv6LengthAt);
        return rest == 0 ? 0 : chip::kIpv6Bytes + rest;
    }
    return 0;
}

/** The body begins with the frame's type. A bridge that filters packets cuts what is behind them. */
Bytes without_padding(Bytes body) {
    if (body.size() < chip::kTypeBytes) {
        return body;
    }
    const Bytes packet = body.subspan(chip::kTypeBytes);
    const size_t length = packet_bytes(chip::read16(body, 0), packet);
    return length == 0 ? body : body.first(chip::kTypeBytes + std::min(length, packet.size()));
}

}  // namespace

uint64_t hash_of(const HashKey &key, uint16_t vid, const chip::Frame &frame) {
    SipHash hash{key};
    hash.add(uint64_t{vid});
    hash.add(frame.head);
    hash.add(without_padding(frame.body));
    return hash.result();
}

void ForwardedFrames::remember(uint64_t hash, Time now) {
    Row &row = rows_[hash % kRows];
    auto entry = std::find_if(row.begin(), row.end(), [hash](const Entry &each) { return each.hash == hash; });
    if (entry == row.end()) {
        entry = std::min_element(row.begin(), row.end(),
                                 [](const Entry &left, const Entry &right) { return left.end < right.end; });
    }
    *entry = {hash, now + kLifetime};
}

bool ForwardedFrames::has(uint64_t hash, Time now) const {
    const Row &row = rows_[hash % kRows];
    return std::any_of(row.begin(), row.end(),
                       [&](const Entry &entry) { return entry.hash == hash && now < entry.end; });
}

}  // namespace switchd
