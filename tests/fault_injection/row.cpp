// Reads rows from their files.
#include "tests/fault_injection/row.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fault_injection {
namespace {

constexpr std::string_view kOpening = "({<[";
constexpr std::string_view kClosing = ")}>]";
constexpr std::string_view kDefine = "define ";

std::filesystem::path folder() {
    return FAULT_INJECTION_ROWS;
}

/** A piece of the file that belongs together: a row or a definition with the lines that go on. */
struct Paragraph {
    size_t line = 0;
    std::string text;
};

std::vector<Paragraph> paragraphs_of(std::istream &text) {
    std::vector<Paragraph> paragraphs;
    std::string line;
    for (size_t number = 1; std::getline(text, line); ++number) {
        line.resize(std::min(line.size(), line.find('#')));
        if (trimmed(line).empty()) {
            continue;
        }
        if (line.front() != ' ' || paragraphs.empty()) {
            paragraphs.push_back({number, line});
        } else {
            paragraphs.back().text += " " + trimmed(line);
        }
    }
    return paragraphs;
}

/** Splits "name: text" or "name = text". */
std::pair<std::string, std::string> named(const std::string &text, char mark, const std::string &where) {
    const size_t at = text.find(mark);
    if (at == std::string::npos) {
        throw std::runtime_error(where + ": '" + text + "' lacks a '" + mark + "'");
    }
    return {trimmed(text.substr(0, at)), trimmed(text.substr(at + 1))};
}

Row row_of(const std::string &text, const std::string &where) {
    const std::vector<std::string> pieces = split(text, '|');
    Row row{where, pieces.front().substr(0, pieces.front().find(' ')), pieces.front(), {}};
    for (size_t index = 1; index < pieces.size(); ++index) {
        auto clause = named(pieces[index], ':', where);
        if (!row.clauses.insert(std::move(clause)).second) {
            throw std::runtime_error(where + ": a clause stands twice: " + pieces[index]);
        }
    }
    return row;
}

}  // namespace

std::string Row::clause(const std::string &name) const {
    const auto found = clauses.find(name);
    return found == clauses.end() ? "" : found->second;
}

bool Row::takes_interface() const {
    return call.find("$intf") != std::string::npos;
}

bool Row::wants(const std::string &state) const {
    return !has("in") || (" " + clause("in") + " ").find(" " + state + " ") != std::string::npos;
}

std::vector<std::string> family_names() {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder())) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

Family read_family(const std::string &name) {
    std::ifstream file(folder() / (name + ".txt"));
    if (!file) {
        throw std::runtime_error("there are no rows for " + name);
    }
    return parse_family(name, file);
}

Family parse_family(const std::string &name, std::istream &text) {
    Family family{name, {}, {}};
    for (const Paragraph &paragraph : paragraphs_of(text)) {
        const std::string where = name + ".txt:" + std::to_string(paragraph.line);
        if (paragraph.text.rfind(kDefine, 0) == 0) {
            family.definitions.insert(named(paragraph.text.substr(kDefine.size()), '=', where));
        } else {
            family.rows.push_back(row_of(paragraph.text, where));
        }
    }
    return family;
}

std::string trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return "";
    }
    return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    size_t start = 0;
    for (size_t at = 0; at <= text.size(); ++at) {
        if (at < text.size() && kOpening.find(text[at]) != std::string_view::npos) {
            at = closing(text, at);
        } else if (at == text.size() || text[at] == separator) {
            const std::string piece = trimmed(text.substr(start, at - start));
            if (!piece.empty()) {
                pieces.push_back(piece);
            }
            start = at + 1;
        }
    }
    return pieces;
}

size_t closing(std::string_view text, size_t open) {
    size_t depth = 0;
    for (size_t at = open; at < text.size(); ++at) {
        if (kOpening.find(text[at]) != std::string_view::npos) {
            ++depth;
        } else if (kClosing.find(text[at]) != std::string_view::npos && --depth == 0) {
            return at;
        }
    }
    throw std::runtime_error("a bracket is not closed: " + std::string(text));
}

}  // namespace fault_injection
