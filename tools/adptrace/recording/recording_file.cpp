// The text of a recording, from a file.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {
namespace {

constexpr size_t kReadAtOnce = size_t{1} << 16;

std::string contents_of(std::FILE *file) {
    std::string text;
    std::string block(kReadAtOnce, '\0');
    size_t line = 0;  // where the last one begins
    // Of a line that is too long no more is read: it may have no end.
    for (size_t count = 0;
         text.size() - line <= kMaxLine && (count = std::fread(block.data(), 1, block.size(), file)) > 0;) {
        text.append(block, 0, count);
        const size_t newline = std::string_view(text).substr(line).rfind('\n');
        line += newline == std::string_view::npos ? 0 : newline + 1;
    }
    if (std::ferror(file) != 0) {
        throw BadRecording(std::string("cannot be read: ") + std::strerror(errno) + ".");
    }
    return text;
}

std::string contents_of_file(const std::string &name) {
    if (name == "-") {
        return contents_of(stdin);
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(name.c_str(), "re"), &std::fclose);
    if (file == nullptr) {
        throw BadRecording(std::string("cannot be opened: ") + std::strerror(errno) + ".");
    }
    return contents_of(file.get());
}

}  // namespace

Recording Recording::of_file(const std::string &name) {
    const std::string shown = name == "-" ? "standard input" : name;
    try {
        return Recording(contents_of_file(name));
    } catch (const BadRecording &error) {
        throw BadRecording(shown + ": " + error.what());
    } catch (const std::bad_alloc &) {
        throw BadRecording(shown + ": there is not enough memory for it.");
    }
}

}  // namespace adptrace
