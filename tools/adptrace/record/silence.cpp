// Looks at a program's file for what keeps the loader from loading a library in front.
#include "tools/adptrace/record/silence.h"

#include <elf.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

namespace adptrace::record {
namespace {

constexpr size_t kMostRead = size_t{1} << 16; /**< of a program: the table of its segments is at the beginning */

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);

std::string beginning_of(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text(kMostRead, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(stream.gcount()));
    return text;
}

bool has_header(const std::string &text) {
    return text.size() >= sizeof(Header) && text.starts_with(ELFMAG);
}

Header header_of(const std::string &text) {
    Header header;
    std::memcpy(&header, text.data(), sizeof header);
    return header;
}

bool is_of_this_machine(const Header &header) {
    const std::string own = beginning_of("/proc/self/exe");
    if (!has_header(own)) {
        return true;
    }
    const Header mine = header_of(own);
    return header.e_ident[EI_CLASS] == mine.e_ident[EI_CLASS] && header.e_ident[EI_DATA] == mine.e_ident[EI_DATA] &&
           header.e_machine == mine.e_machine;
}

bool has_loader(const std::string &text, const Header &header) {
    for (size_t index = 0; index < header.e_phnum; ++index) {
        const size_t at = header.e_phoff + index * sizeof(Segment);
        Segment segment;
        if (at + sizeof segment > text.size()) {
            return true;
        }
        std::memcpy(&segment, text.data() + at, sizeof segment);
        if (segment.p_type == PT_INTERP) {
            return true;
        }
    }
    return false;
}

bool is_privileged(const std::string &file) {
    struct stat status = {};
    return (stat(file.c_str(), &status) == 0 && (status.st_mode & (S_ISUID | S_ISGID)) != 0) ||
           getxattr(file.c_str(), "security.capability", nullptr, 0) > 0;
}

}  // namespace

std::string why_silent(const std::string &file, bool follows) {
    const std::string text = beginning_of(file);
    const std::string name = "'" + file + "'";
    if (has_header(text)) {
        const Header header = header_of(text);
        if (!is_of_this_machine(header)) {
            return name + " is for another machine than adptrace; record with an adptrace that is built for it.";
        }
        if (!has_loader(text, header)) {
            return name + " is linked statically, so no library can be put in front of its calls.";
        }
    }
    if (is_privileged(file)) {
        return name +
               " is setuid or has capabilities, and the loader then takes no library from the environment; record as "
               "the user it becomes, from a copy without them.";
    }
    return name + " ended before its libraries were loaded, or runs without the environment that adptrace has set" +
           (follows ? "." : "; a program that it starts is recorded with -f.");
}

}  // namespace adptrace::record
