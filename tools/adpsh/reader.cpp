// Lines from a stream or a list.
#include "tools/adpsh/reader.h"

#include <stddef.h>
#include <utility>

namespace adpsh {

namespace {

class StreamReader : public Reader {
  public:
    explicit StreamReader(std::istream &stream) : stream_(stream) {}

    std::optional<std::string> next() override {
        std::string line;
        return std::getline(stream_, line) ? std::optional(std::move(line)) : std::nullopt;
    }

  private:
    std::istream &stream_;
};

class ListReader : public Reader {
  public:
    explicit ListReader(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    std::optional<std::string> next() override {
        return next_ < lines_.size() ? std::optional(lines_[next_++]) : std::nullopt;
    }

  private:
    std::vector<std::string> lines_;
    size_t next_ = 0;
};

}  // namespace

std::unique_ptr<Reader> stream_reader(std::istream &stream) {
    return std::make_unique<StreamReader>(stream);
}

std::unique_ptr<Reader> list_reader(std::vector<std::string> lines) {
    return std::make_unique<ListReader>(std::move(lines));
}

}  // namespace adpsh
