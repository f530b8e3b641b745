// Checks requests, which may be anything.
#include "switchd/daemon/control.h"

#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "switchd/daemon/commands.h"

namespace switchd {
namespace {

using nlohmann::json;

constexpr size_t kMostArguments = 8;
constexpr size_t kMostCharacters = 256;

Arguments arguments_of(const json &request) {
    Arguments arguments;
    const auto given = request.find("arguments");
    if (given == request.end()) {
        return arguments;
    }
    if (!given->is_array() || given->size() > kMostArguments) {
        throw std::runtime_error{"'arguments' is a list of words."};
    }
    for (const json &word : *given) {
        if (!word.is_string() || word.get_ref<const std::string &>().size() > kMostCharacters) {
            throw std::runtime_error{"'arguments' is a list of words."};
        }
        arguments.push_back(word);
    }
    return arguments;
}

}  // namespace

json answer(const Handlers &handlers, const json &request) {
    try {
        const auto name = request.find("command");
        if (name == request.end() || !name->is_string()) {
            throw std::runtime_error{"the request has no 'command'."};
        }
        const Arguments arguments = arguments_of(request);
        const Command &command = command_of(name->get_ref<const std::string &>(), arguments.size());
        const auto handler = handlers.find(command.name);
        if (handler == handlers.end()) {
            throw std::runtime_error{"'" + std::string{command.name} + "' is not answered now."};
        }
        return handler->second(arguments);
    } catch (const std::bad_alloc &) {
        throw;  // the server ends this client
    } catch (const std::exception &error) {
        return {{"error", error.what()}};
    }
}

}  // namespace switchd
