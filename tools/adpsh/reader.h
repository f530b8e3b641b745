/**
 * @file reader.h
 * Where the shell's lines come from.
 */
#pragma once

#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace adpsh {

class Reader {
  public:
    Reader() = default;
    virtual ~Reader() = default;
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    /** The next line; nothing at the end. */
    virtual std::optional<std::string> next() = 0;
};

std::unique_ptr<Reader> stream_reader(std::istream &stream);
std::unique_ptr<Reader> list_reader(std::vector<std::string> lines);
/** Lines typed at a terminal, with history and completion if the build has a line editor. */
std::unique_ptr<Reader> terminal_reader();

}  // namespace adpsh
