// The daemon's side: finds the keeper or starts it, and talks to it.
#include "switchd/ports/keeper.h"

#include <cerrno>
#include <chrono>
#include <utility>

#include "switchd/ports/keeper_message.h"
#include "switchd/ports/keeper_process.h"
#include "vdevice/io/error.h"
#include "vdevice/sockets/device_socket.h"

namespace switchd {
namespace {

constexpr std::chrono::seconds kPatienceWithKeeper{2};

int connect_to(vdevice::UniqueFd &socket, const std::string &path) {
    return vdevice::connect_to_device(socket, path, std::chrono::steady_clock::now() + kPatienceWithKeeper);
}

}  // namespace

Keeper::Keeper(const std::string &path) {
    int error = connect_to(socket_, path);
    if (error == ENOENT || error == ECONNREFUSED) {
        error = start_keeper(path) ? connect_to(socket_, path) : ECHILD;
    }
    if (error != 0) {
        throw vdevice::io::Error{
            "cannot keep the interfaces' carrier over a restart: no process can be reached or started at " + path +
            "."};
    }
    wait_on(socket_.get());
}

std::map<std::string, vdevice::UniqueFd> Keeper::held() {
    std::map<std::string, vdevice::UniqueFd> held;
    if (!send_message(socket_.get(), KeeperVerb::kList)) {
        return held;
    }
    for (auto message = receive_message(socket_.get()); message && message->verb == KeeperVerb::kHold;
         message = receive_message(socket_.get())) {
        held[message->name] = std::move(message->fd);
    }
    return held;
}

bool Keeper::hold(const std::string &name, int fd) {
    return send_message(socket_.get(), KeeperVerb::kHold, name, fd);
}

bool Keeper::drop(const std::string &name) {
    return send_message(socket_.get(), KeeperVerb::kDrop, name);
}

void Keeper::end() {
    if (send_message(socket_.get(), KeeperVerb::kEnd)) {
        receive_message(socket_.get());  // nothing comes but the end of the connection
    }
}

}  // namespace switchd
