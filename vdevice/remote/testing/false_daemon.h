// For tests of the client: a daemon that says what it was told to.
#pragma once

#include "vdevice/remote/testing/device.h"

namespace vdevice::remote {

/** Answers one client with these words, whatever it sends. */
class FalseDaemon {
  public:
    FalseDaemon(const std::string &path, std::initializer_list<uint32_t> words)
        : listener_(socket(AF_UNIX, SOCK_STREAM, 0)) {
        const sockaddr_un address = address_of(path);
        EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener_, 1), 0);
        Writer writer;
        for (const uint32_t word : words) {
            writer.word(word);
        }
        thread_ = std::thread([this, answer = writer.take()] { serve(answer); });
    }
    ~FalseDaemon() {
        thread_.join();
        close(listener_);
    }
    FalseDaemon(const FalseDaemon &) = delete;
    FalseDaemon &operator=(const FalseDaemon &) = delete;

  private:
    void serve(const std::vector<uint8_t> &answer) {
        const int peer = accept(listener_, nullptr, nullptr);
        send(peer, answer.data(), answer.size(), MSG_NOSIGNAL);
        uint8_t said[64];
        while (recv(peer, said, sizeof said, 0) > 0) {
        }
        close(peer);
    }

    int listener_;
    std::thread thread_;
};

}  // namespace vdevice::remote
