// The terminal without a line editor: a prompt and plain lines.
#include "tools/adpsh/reader.h"

#include <iostream>

namespace adpsh {

namespace {

class PlainTerminal : public Reader {
  public:
    std::optional<std::string> next() override {
        std::cout << "adp> " << std::flush;
        std::string line;
        if (std::getline(std::cin, line)) {
            return line;
        }
        std::cout << std::endl;
        return std::nullopt;
    }
};

}  // namespace

std::unique_ptr<Reader> terminal_reader() {
    return std::make_unique<PlainTerminal>();
}

}  // namespace adpsh
