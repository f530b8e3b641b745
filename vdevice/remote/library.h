// The client of a library that stands for the device: one each, which outlives everything that may call it.
#pragma once

#include <atomic>
#include <memory>

#include "vdevice/remote/client.h"

namespace vdevice::remote {

/** This library's client; the library's name is vdevice_library_name(). */
Client &library_client();

/** A client of the library's own kind, for a connection of its own. */
std::unique_ptr<Client> make_client();

/**
 * The object of this process, made at its first use and never destroyed. No lock guards the first use: the child of a
 * fork could inherit it locked.
 */
template <typename Object, typename Make>
Object &object_of_process(std::atomic<Object *> &object, Make make) {
    Object *there = object;
    if (there == nullptr) {
        std::unique_ptr<Object> mine = make();
        if (object.compare_exchange_strong(there, mine.get())) {
            there = mine.release();
        }
    }
    return *there;
}

}  // namespace vdevice::remote

/** Defined by each library: its name for messages. */
const char *vdevice_library_name();
