/**
 * @file loaded.h
 * The library and the driver as shared libraries that are loaded now.
 */
#pragma once

#include <adp/port.h>

#include <array>
#include <string>
#include <vector>

#include "tools/adptrace/replay/boundary.h"
#include "tools/adptrace/replay/replay.h"

namespace adptrace::replay {

/** A shared library that stays loaded, with all that its calls are looked up in; its names serve those after it. */
class SharedLibrary {
  public:
    /** Throws a Refusal. */
    explicit SharedLibrary(const std::string &file);
    /** Null if it does not have the name. */
    [[nodiscard]] void *find(const char *name) const;

  private:
    void *handle_;
};

class LoadedDriver final : public Driver {
  public:
    /** Throws a Refusal. */
    explicit LoadedDriver(const std::vector<std::string> &files);

    int64_t ask(calls::CallId id, const void *const *arguments) override;

  private:
    [[nodiscard]] void *find(const char *name) const;

    std::vector<SharedLibrary> libraries_;
    std::array<void *, calls::kCallCount> functions_{};
};

class LoadedLibrary final : public Library {
  public:
    /** Throws a Refusal. */
    explicit LoadedLibrary(const std::string &file);

    [[nodiscard]] bool has(const exported::Call &call) const override;
    int64_t make(const exported::Call &call, const void *const *arguments) override;
    [[nodiscard]] nlohmann::json board() const override;
    void set_board(const nlohmann::json &rows) override;

  private:
    struct Map {
        adp_port_row_t *rows = nullptr;
        size_t count = 0;
    };
    [[nodiscard]] Map map() const;

    SharedLibrary library_;
};

}  // namespace adptrace::replay
