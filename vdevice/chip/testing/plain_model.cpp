// The way of a frame once more, in the words of the rules.
#include "vdevice/chip/testing/plain_model.h"

#include <iterator>

namespace vdevice::chip::test {
namespace {

constexpr int kModelPorts = 32;
constexpr int64_t kAgeSeconds = 300;

}  // namespace

PlainModel::PlainModel() {
    for (int port = 0; port < kModelPorts; ++port) {
        vlans[1].members.insert(port);
        if (port != 0) {
            vlans[1].untagged.insert(port);
        }
        pvid[port] = 1;
    }
}

int PlainModel::state(int vid, int port) {
    const int group = groups.count(vid) != 0 ? groups[vid] : 0;
    const auto found = states.find({group, port});
    return found == states.end() ? 4 : found->second;
}

std::optional<PlainModel::Read> PlainModel::read(int ingress, const Octets &frame) {
    Read read{0, 0, part(frame, 12, frame.size())};
    if (read.rest.at(0) == 0x81 && read.rest.at(1) == 0x00) {
        if (read.rest.size() < 6) {
            return std::nullopt;
        }
        read.vid = (read.rest.at(2) & 0x0F) * 256 + read.rest.at(3);
        read.priority = read.rest.at(2) & 0xF0;
        read.rest = part(read.rest, 4, read.rest.size());
    }
    if (read.vid == 0) {
        read.vid = pvid[ingress];
    }
    return read;
}

/** Learns the source, if the port's state lets it; true if the port forwards. */
bool PlainModel::let_in(int ingress, int vid, const Octets &source) {
    if (vlans.count(vid) == 0 || vlans[vid].members.count(ingress) == 0) {
        return false;
    }
    if (state(vid, ingress) >= 3 && source.at(0) % 2 == 0) {
        stations[{vid, source}] = {ingress, now};
    }
    return state(vid, ingress) == 4;
}

Octets PlainModel::form(int port, int ingress, const Octets &addresses, const Read &frame) {
    const Octets tag = {0x81, 0x00, static_cast<uint8_t>(frame.priority | frame.vid / 256),
                        static_cast<uint8_t>(frame.vid % 256)};
    if (port == 0) {
        const Octets to_cpu = {0x88, 0x74, 0, 0, 0, static_cast<uint8_t>(ingress)};
        return addresses + to_cpu + tag + frame.rest;
    }
    const bool is_untagged = vlans[frame.vid].untagged.count(port) != 0;
    return is_untagged ? addresses + frame.rest : addresses + tag + frame.rest;
}

std::set<Sent> PlainModel::from_port(int ingress, const Octets &frame) {
    if (up.count(ingress) == 0 || frame.size() < 14) {
        return {};
    }
    const std::optional<Read> got = read(ingress, frame);
    if (!got || !let_in(ingress, got->vid, part(frame, 6, 12))) {
        return {};
    }
    const int vid = got->vid;
    std::set<int> outputs = vlans[vid].members;
    if (const auto known = stations.find({vid, part(frame, 0, 6)}); known != stations.end()) {
        outputs = {known->second.port};
    }
    std::set<Sent> sent;
    for (const int port : outputs) {
        if (port != ingress && up.count(port) != 0 && vlans[vid].members.count(port) != 0 && state(vid, port) == 4) {
            sent.insert({port, form(port, ingress, part(frame, 0, 12), *got)});
        }
    }
    return sent;
}

/** The ports that a frame with a tag of the CPU's is directed to. */
std::set<uint32_t> PlainModel::directed(const Octets &frame) {
    const int opcode = frame[14] / 32;
    const uint32_t field = (frame[14] % 2U) << 24 | frame[15] * 65536U | frame[16] * 256U | frame[17];
    const uint32_t more = frame[18] * 16777216U | frame[19] * 65536U | frame[20] * 256U | frame[21];
    std::set<uint32_t> outputs;
    if (opcode == 3 || opcode == 5 || opcode == 6) {
        outputs.insert(field);
    } else if (opcode == 4 || opcode == 7) {
        for (uint32_t bit = 0; bit < 32; ++bit) {
            if (bit < 25 && (field >> bit) % 2 == 1) {
                outputs.insert(bit);
            }
            if ((more >> bit) % 2 == 1) {
                outputs.insert(bit + 25);
            }
        }
    }
    return outputs;
}

std::set<Sent> PlainModel::from_cpu(const Octets &frame) {
    if (up.count(0) == 0 || frame.size() < 24 || frame[12] != 0x88 || frame[13] != 0x74) {
        return {};
    }
    const int opcode = frame[14] / 32;
    const Octets inner = part(frame, 0, 12) + part(frame, 22, frame.size());
    if (opcode == 1) {
        return from_port(0, inner);
    }
    std::set<Sent> sent;
    for (const uint32_t output : directed(frame)) {
        const int port = static_cast<int>(output);
        if (port == 0 || up.count(port) == 0) {
            continue;
        }
        Octets out = inner;
        if ((opcode == 3 || opcode == 4) && inner.size() >= 18 && inner[12] == 0x81 && inner[13] == 0x00) {
            const int vid = (inner[14] & 0x0F) * 256 + inner[15];
            if (vlans.count(vid) != 0 && vlans[vid].untagged.count(port) != 0) {
                out = part(inner, 0, 12) + part(inner, 16, inner.size());
            }
        }
        sent.insert({port, out});
    }
    return sent;
}

void PlainModel::age() {
    for (auto station = stations.begin(); station != stations.end();) {
        station = now - station->second.seen >= kAgeSeconds ? stations.erase(station) : std::next(station);
    }
}

}  // namespace vdevice::chip::test
