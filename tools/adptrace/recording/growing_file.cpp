// The writer appends whole lines, but a read can still see the beginning of one.
#include "tools/adptrace/recording/growing_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {
namespace {

constexpr size_t kBlock = size_t{1} << 16;

int leave_open(std::FILE * /*file*/) {
    return 0;
}

}  // namespace

GrowingFile::GrowingFile(const std::string &name)
    : name_(name),
      file_(name == "-" ? stdin : std::fopen(name.c_str(), "re"), name == "-" ? &leave_open : &std::fclose) {
    if (file_ == nullptr) {
        throw BadRecording(std::string("cannot be opened: ") + std::strerror(errno) + ".");
    }
}

void GrowingFile::read(const std::function<void(std::string_view line)> &take) {
    std::string block(kBlock, '\0');
    std::clearerr(file_.get());  // the end that was there is none any more
    for (size_t count = 0; (count = std::fread(block.data(), 1, block.size(), file_.get())) > 0;) {
        read_ += static_cast<int64_t>(count);
        rest_.append(block, 0, count);
        size_t begin = 0;
        for (size_t end = 0; (end = rest_.find('\n', begin)) != std::string::npos; begin = end + 1) {
            take(std::string_view(rest_).substr(begin, end - begin));
        }
        rest_.erase(0, begin);
        if (rest_.size() > kMaxLine) {
            return take(rest_);  // it is refused
        }
    }
    if (std::ferror(file_.get()) != 0) {
        throw BadRecording(std::string("cannot be read: ") + std::strerror(errno) + ".");
    }
}

void GrowingFile::check() const {
    struct stat own = {};
    struct stat named = {};
    if (fstat(fileno(file_.get()), &own) == 0 && own.st_size < read_) {
        throw BadRecording("was truncated while it was followed.");
    }
    if (stat(name_.c_str(), &named) != 0) {
        throw BadRecording(std::string("is not there any more: ") + std::strerror(errno) + ".");
    }
    if (named.st_dev != own.st_dev || named.st_ino != own.st_ino) {
        throw BadRecording("was replaced by another file while it was followed.");
    }
}

}  // namespace adptrace
