/**
 * @file call_line.h
 * Calls of the library that a test or benchmark has as a line of the shell.
 */
#pragma once

#include <stdexcept>
#include <string>
#include <variant>

#include "calls/exported.h"
#include "tools/adpsh/parser.h"

namespace call_line {

/** Throws std::runtime_error when the line cannot be read. */
inline adpsh::Command parsed(const std::string &line) {
    const auto command = adpsh::parse_line(line);
    if (const auto *error = std::get_if<adpsh::Error>(&command)) {
        throw std::runtime_error(line + ": " + error->text);
    }
    return std::get<adpsh::Command>(command);
}

/** Throws std::runtime_error when there is no such function. */
inline const exported::Call &require_call(const std::string &name) {
    const exported::Call *call = exported::find_call(name);
    if (call == nullptr) {
        throw std::runtime_error("no exported function is called " + name);
    }
    return *call;
}

}  // namespace call_line
