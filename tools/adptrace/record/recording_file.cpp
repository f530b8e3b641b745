// Makes, ends and counts a recording.
#include "tools/adptrace/record/recording_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "calls/json_text.h"
#include "tools/adptrace/command.h"
#include "tools/adptrace/record/whole_line.h"

namespace adptrace::record {
namespace {

constexpr std::string_view kHeaderBegin = R"({"adptrace":)";
constexpr int kVersion = 1;
constexpr mode_t kMode = 0666;

[[noreturn]] void refuse(const std::string &name, const std::string &why) {
    throw Refusal("'" + name + "': " + why + ".");
}

bool is_replaceable(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, kHeaderBegin.size()> start{};
    file.read(start.data(), start.size());
    return file.gcount() == 0 || std::string_view(start.data(), static_cast<size_t>(file.gcount())) == kHeaderBegin;
}

/** Where the file is, or will be. */
std::string path_of(const std::string &name) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::weakly_canonical(name, error);
    if (error) {
        refuse(name, error.message());
    }
    return path;
}

std::string time_text() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, sizeof "2026-01-01T00:00:00Z"> text{};
    std::strftime(text.data(), text.size(), "%FT%TZ", &parts);
    return text.data();
}

}  // namespace

RecordingFile::RecordingFile(const std::string &name) : name_{name}, path_{path_of(name)} {
    struct stat status = {};
    if (stat(path_.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) {
            refuse(name, "this is no regular file");
        }
        if (!is_replaceable(path_)) {
            refuse(name, "this file is no recording, so it is not replaced");
        }
        // The old file is left to whatever still writes to it.
        if (unlink(path_.c_str()) != 0) {
            refuse(name, std::strerror(errno));
        }
    }
    fd_ = vdevice::UniqueFd(open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
    if (!fd_) {
        refuse(name, std::strerror(errno));
    }
    began_ = nanoseconds_now();
}

void RecordingFile::write_header(std::span<const std::string> command) {
    std::string line(kHeaderBegin);
    line += std::to_string(kVersion);
    line += std::endian::native == std::endian::big ? R"(,"byte_order":"big")" : R"(,"byte_order":"little")";
    line += R"(,"word_bits":)" + std::to_string(sizeof(void *) * CHAR_BIT);
    line += R"(,"started":")" + time_text() + R"(","command":)";
    char separator = '[';
    for (const std::string &word : command) {
        line += separator;
        separator = ',';
        calls::append_text(line, word.c_str());
    }
    line += "]}\n";
    if (const int error = append_whole(fd_.get(), line.data(), line.size()); error != 0) {
        remove();
        refuse(name_, std::strerror(error));
    }
}

void RecordingFile::write_exit(const Ending &ending) {
    std::string line = R"({"exit":)" + std::to_string(ending.process);
    line += R"(,"at":)" + std::to_string(nanoseconds_now() - began_);
    line += ending.signal != 0 ? R"(,"signal":)" + std::to_string(ending.signal)
                               : R"(,"status":)" + std::to_string(ending.status);
    line += "}\n";
    // Where there is no room the recording has stopped before, with a sentence.
    append_whole(fd_.get(), line.data(), line.size());
}

void RecordingFile::remove() {
    unlink(path_.c_str());
}

Session RecordingFile::session(bool follows, bool frames) const {
    struct stat status = {};
    fstat(fd_.get(), &status);
    return {.process = 0,
            .began = began_,
            .device = status.st_dev,
            .inode = status.st_ino,
            .follows = follows ? 1U : 0U,
            .frames = frames ? 1U : 0U};
}

Contents RecordingFile::contents(int64_t process) const {
    Contents contents;
    std::ifstream file(path_);
    const std::string own = R"({"process":)" + std::to_string(process) + ",";
    for (std::string line; std::getline(file, line);) {
        contents.octets += line.size() + 1;
        contents.calls += size_t{line.starts_with(R"({"begin":)")};
        contents.processes += size_t{line.starts_with(R"({"process":)")};
        contents.has_process = contents.has_process || line.starts_with(own);
    }
    return contents;
}

}  // namespace adptrace::record
