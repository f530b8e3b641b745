// Keeps what the kernel has up to date: reads all of it at first, then the kernel's notifications.
#pragma once

#include <stdint.h>

#include "switchd/kernel/kernel_state.h"
#include "switchd/kernel/message.h"
#include "switchd/kernel/netlink_socket.h"
#include "switchd/kernel/reader.h"

namespace switchd {

class KernelMonitor {
  public:
    struct Counters {
        uint64_t messages = 0;
        uint64_t resyncs = 0; /**< how often everything was read, the first time included */
        uint64_t losses = 0;  /**< how often the kernel had no room for notifications */
        uint64_t ignored = 0; /**< links, addresses and memberships that found a table full */
    };

    /** Reads everything. Throws a vdevice::io::Error if the kernel does not let it. */
    explicit KernelMonitor(int buffer_octets = kBufferOctets);

    /** Readable when notifications wait. */
    int fd() const { return notifications_.fd(); }
    /** Reads everything anew; true if the state has changed. Throws a vdevice::io::Error; then the state is as before.
     */
    bool resync();
    /**
     * Reads notifications that wait, so many at most that other work is not kept waiting; after a loss everything. True
     * if the state has changed.
     */
    bool receive();
    /**
     * To be called once a second: reads of bridges what the kernel does not announce, and everything if that is due.
     * True if the state has changed.
     */
    bool refresh_bridges();

    const KernelState &state() const { return reader_.state(); }
    /** False while something of what the kernel has found a table full. */
    bool is_complete() const { return reader_.ignored() == 0; }
    Counters counters() const;

  private:
    static constexpr int kBufferOctets = 8 * 1024 * 1024;

    enum class Table { kLinks, kBridgeLinks, kAddresses, kGroups, kBridges };

    /** Reads everything until nothing was lost or removed meanwhile; after some tries it is due again. */
    bool try_resync();
    bool resync_if_due();
    int read_all(Reader &fresh);
    bool read_notifications(Reader *reader);
    int dump(Table table, Reader &reader);
    int dump_once(Table table, Reader &reader, bool &interrupted);
    void write_request(Table table);

    netlink::Socket notifications_;
    netlink::Socket requests_;
    netlink::MessageWriter writer_;
    uint32_t sequence_ = 0;
    Reader reader_;
    bool due_ = true;   /**< the state may lack something: it must be read anew */
    Counters counters_; /**< without those of the reader */
};

}  // namespace switchd
