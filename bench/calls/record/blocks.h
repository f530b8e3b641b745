/**
 * @file blocks.h
 * Memory of this process written as C: each block becomes a buffer that is filled before every call.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace record {

/** The buffers of one case. An address in one of them that leads into another is written as an address of that. */
class Blocks {
  public:
    /** @p prefix begins the buffers' names. */
    explicit Blocks(std::string prefix) : prefix_(std::move(prefix)) {}

    /** Copies a block; gives the buffer's address as C. */
    std::string add(std::span<const uint8_t> bytes);
    /** The address as C, if it leads into a block. */
    [[nodiscard]] std::optional<std::string> find(uintptr_t address) const;

    /** The definitions of the buffers, and of the images that they are filled from. */
    [[nodiscard]] std::string definitions() const;
    /** The statements that fill them. */
    [[nodiscard]] std::string preparation() const;

  private:
    struct Block {
        std::string name;
        uintptr_t begin;
        std::vector<uint8_t> bytes;
    };

    std::string prefix_;
    std::vector<Block> blocks_;
};

/** Bytes as a C initialiser. */
std::string initialiser(std::span<const uint8_t> bytes);
/** Text as a C literal. */
std::string literal(const char *text);

}  // namespace record
