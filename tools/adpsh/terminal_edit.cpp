// The terminal with libedit: history, and completion of calls, commands, tables and constants.
#include "calls/exported.h"
#include "tools/adpsh/builtins.h"
#include "tools/adpsh/reader.h"

#include <editline/readline.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace adpsh {

namespace {

constexpr int kHistoryLines = 1000;

bool begins_with(const char *name, const std::string &beginning) {
    return std::strncmp(name, beginning.c_str(), beginning.size()) == 0;
}

template <typename Rows>
void add_names(const Rows &rows, const std::string &beginning, std::vector<std::string> &names) {
    for (const auto &row : rows) {
        const std::string name(row.name);
        if (begins_with(name.c_str(), beginning)) {
            names.push_back(name);
        }
    }
}

/** The names that can complete a word of the line. */
std::vector<std::string> candidates(const std::string &beginning, bool first, const std::string &command) {
    std::vector<std::string> names;
    if (first || command == "help" || command == "calls") {
        add_names(builtins(), beginning, names);
        add_names(exported::calls(), beginning, names);
    }
    if (!first && (command == "show" || command == "help")) {
        add_names(exported::tables(), beginning, names);
    }
    if (!first && find_builtin(command) == nullptr && !beginning.empty()) {
        add_names(exported::constants(), beginning, names);
    }
    return names;
}

// libedit asks for the candidates one by one.
char *next_candidate(const char *text, int state) {
    static std::vector<std::string> names;
    static size_t next = 0;
    if (state == 0) {
        const std::string line(rl_line_buffer, rl_line_buffer + rl_point);
        const size_t start = line.find_first_not_of(" \t");
        const size_t end = start == std::string::npos ? start : line.find_first_of(" \t", start);
        const std::string command = end == std::string::npos ? std::string() : line.substr(start, end - start);
        names = candidates(text, end == std::string::npos, command);
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
