// A port of the device on a network interface: whole Ethernet frames, tags included, in and out in batches.
#pragma once

#include <stdint.h>
#include <string>

#include "vdevice/chip/frame/frame.h"
#include "vdevice/io/receive_batch.h"
#include "vdevice/io/receive_ring.h"
#include "vdevice/io/send_queue.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice::io {

class PacketPort {
  public:
    /** @p ring_slots is 0 for a port without a ring. */
    explicit PacketPort(std::string interface_name, size_t ring_slots = ReceiveRing::kSlots)
        : interface_name_{std::move(interface_name)}, ring_slots_{ring_slots} {}

    const std::string &interface_name() const { return interface_name_; }
    int interface_index() const { return index_; }
    /** The socket that frames come in by. */
    int fd() const { return socket_.get(); }
    /** The open port is still on the interface that has its name: none was removed, renamed or put in its place. */
    bool is_current() const;
    bool is_open() const { return static_cast<bool>(socket_); }
    bool has_ring() const { return ring_.is_open(); }

    /** Throws an Error if there is no such interface or no privilege. Opens without a ring if the kernel gives none. */
    void open();
    /** Frames that wait in either direction are lost, and counted. */
    void close();

    /**
     * Hands waiting frames to take(frame, arrival), in order, and at most so many that the other ports have their turn.
     * The frame's bytes are valid during the call only. Frames that are not in a ring come through the batch; without a
     * ring they are taken to have come in just now.
     */
    template <typename Take>
    void receive(ReceiveBatch &batch, Take take) {
        if (!has_ring()) {
            receive_batch(batch, ReceiveBatch::kFrames, std::chrono::system_clock::now(), take);
            return;
        }
        size_t count = 0;
        for (std::optional<Arrival> arrival; count < kFramesAtOnce && (arrival = ring_.front()); ++count) {
            if (arrival == Arrival::kInRing) {
                take(ring_.take(), ring_.arrival());
            } else if (arrival == Arrival::kInSocket) {
                receive_batch(batch, 1, ring_.arrival(), take);
            } else {
                ++receive_losses_;
            }
            ring_.release();
        }
        if (count == 0) {
            forget_error();
        }
    }

    /** Copies the frame for the next flush; true if it is the first one waiting. */
    bool queue(const chip::Frame &frame);
    void flush();
    /** Frames that the interface did not take. */
    uint64_t send_failures() const { return send_failures_; }
    /** Frames that were lost because neither ring nor socket had room, or because the port was closed. */
    uint64_t receive_losses() const;
    void clear_counts();

  private:
    static constexpr size_t kFramesAtOnce = 128;

    template <typename Take>
    void receive_batch(ReceiveBatch &batch, size_t limit, WallTime arrival, Take take) {
        batch.receive(fd(), limit);
        for (size_t i = 0; i < batch.size(); ++i) {
            take(batch.frame(i), arrival);
        }
    }
    void forget_error() const;
    UniqueFd open_for_sending(int index) const;
    UniqueFd open_for_receiving(int index);
    uint64_t discard_unread();

    std::string interface_name_;
    size_t ring_slots_;
    int index_ = 0;
    UniqueFd socket_;
    UniqueFd send_socket_;
    ReceiveRing ring_;
    SendQueue queue_;
    uint64_t send_failures_ = 0;
    mutable uint64_t receive_losses_ = 0; /**< up to the last time the kernel was asked */
};

}  // namespace vdevice::io
