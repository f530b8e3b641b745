// The terminal with libedit: history and completion.
#include "tools/adpsh/complete.h"
#include "tools/adpsh/reader.h"

#include <editline/readline.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace adpsh {

namespace {

constexpr int kHistoryLines = 1000;

// libedit asks for the candidates one by one.
char *next_candidate(const char *text, int state) {
    static std::vector<std::string> names;
    static size_t next = 0;
    if (state == 0) {
        const std::string before(rl_line_buffer, rl_line_buffer + rl_point);
        const size_t typed = std::min(before.size(), std::strlen(text));
        names = completions(std::string_view(before).substr(0, before.size() - typed), text);
        next = 0;
    }
    return next < names.size() ? ::strdup(names[next++].c_str()) : nullptr;
}

char **complete(const char *text, int, int) {
    rl_attempted_completion_over = 1;  // no file names
    return rl_completion_matches(text, next_candidate);
}

class EditTerminal : public Reader {
  public:
    EditTerminal() {
        rl_initialize();
        using_history();
        stifle_history(kHistoryLines);
        rl_attempted_completion_function = complete;
        if (const char *const home = std::getenv("HOME")) {
            history_file_ = std::string(home) + "/.adpsh_history";
            read_history(history_file_.c_str());
        }
    }
    ~EditTerminal() override {
        if (!history_file_.empty()) {
            write_history(history_file_.c_str());
        }
    }
    EditTerminal(const EditTerminal &) = delete;
    EditTerminal &operator=(const EditTerminal &) = delete;

    std::optional<std::string> next() override {
        char *const typed = ::readline("adp> ");
        if (typed == nullptr) {
            std::puts("");
            return std::nullopt;
        }
        std::string line(typed);
        std::free(typed);
        if (!line.empty()) {
            add_history(line.c_str());
        }
        return line;
    }

  private:
    std::string history_file_;
};

}  // namespace

std::unique_ptr<Reader> terminal_reader() {
    return std::make_unique<EditTerminal>();
}

}  // namespace adpsh
