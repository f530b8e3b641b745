// Values of a TOML file, read with the line of each mistake. Included by the files that read a configuration alone: the
// library's header takes long to compile.
#pragma once

#include <stdint.h>
#include <sys/stat.h>

#include <toml++/toml.h>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "text/printable.h"
#include "text/suggest.h"
#include "vdevice/io/error.h"

namespace vdevice::toml_file {

constexpr size_t kMaxFileBytes = 1 << 20;
constexpr size_t kMaxLineBytes = 1000;

/** A file that is being read; what else its keys need is added by a class of its own. */
struct File {
    std::string path;

    std::string place(const toml::source_region &where) const { return path + ":" + std::to_string(where.begin.line); }
    [[noreturn]] void fail(const toml::source_region &where, const std::string &what) const {
        throw io::Error{place(where) + ": " + what};
    }
};

/** What a file may say: the reader stores it in the target. */
template <typename Reading, typename Target>
struct Key {
    std::string_view name;
    void (*read)(Reading &file, const toml::node &value, Target &target);
};

[[noreturn]] inline void fail_at_key(const File &file, const toml::key &key,
                                     const std::vector<std::string_view> &names) {
    const std::string question = text::did_you_mean(key.str(), names, ", ");
    file.fail(key.source(), "there is no key '" + text::on_one_line(key.str().substr(0, 64)) + "'" +
                                (question.empty() ? "." : question));
}

/** Hands each value to its key's function. */
template <typename Reading, typename Target, size_t kCount>
void read_table(Reading &file, const toml::table &table, const Key<Reading, Target> (&keys)[kCount], Target &target) {
    for (const auto &[key, value] : table) {
        const std::string_view name = key.str();
        const auto *const known =
            std::find_if(std::begin(keys), std::end(keys), [&](const auto &row) { return row.name == name; });
        if (known == std::end(keys)) {
            std::vector<std::string_view> names;
            std::transform(std::begin(keys), std::end(keys), std::back_inserter(names),
                           [](const auto &row) { return row.name; });
            fail_at_key(file, key, names);
        }
        known->read(file, value, target);
    }
}

/** @p name is the value's in messages. */
template <typename Type>
Type value_of(const File &file, const toml::node &value, const char *name, const char *type) {
    const auto found = value.value_exact<Type>();
    if (!found) {
        file.fail(value.source(), std::string{name} + " must be " + type + ".");
    }
    return *found;
}

inline std::string text_of(const File &file, const toml::node &value, const char *name) {
    return value_of<std::string>(file, value, name, "a text in quotes");
}

inline bool switch_of(const File &file, const toml::node &value, const char *name) {
    return value_of<bool>(file, value, name, "true or false");
}

inline uint32_t number_of(const File &file, const toml::node &value, const char *name, int64_t least, int64_t most) {
    const auto number = value_of<int64_t>(file, value, name, "a whole number");
    if (number < least || number > most) {
        file.fail(value.source(), std::string{name} + " " + std::to_string(number) + " is not in " +
                                      std::to_string(least) + " to " + std::to_string(most) + ".");
    }
    return static_cast<uint32_t>(number);
}

/** The number of a word in a list of them. */
template <size_t kCount>
uint32_t choice_of(const File &file, const toml::node &value, const char *name, const char *const (&words)[kCount]) {
    const std::string word = text_of(file, value, name);
    for (uint32_t i = 0; i < kCount; ++i) {
        if (word == words[i]) {
            return i;
        }
    }
    std::string all = std::string{name} + " must be one of";
    for (const char *const known : words) {
        all += std::string{known == words[0] ? " " : ", "} + "\"" + known + "\"";
    }
    file.fail(value.source(), all + ".");
}

inline std::string contents_of(const std::string &path) {
    struct stat found {};
    if (stat(path.c_str(), &found) != 0) {
        throw io::error_from_errno("read " + path);
    }
    if (!S_ISREG(found.st_mode)) {
        throw io::Error{"cannot read " + path + ": it is not a file."};
    }
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw io::error_from_errno("read " + path);
    }
    std::string text(kMaxFileBytes + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(stream.gcount()));
    if (text.size() > kMaxFileBytes) {
        throw io::Error{"cannot read " + path + ": it has more than " + std::to_string(kMaxFileBytes) + " octets."};
    }
    return text;
}

/** The library bounds how deep values nest, but not keys, and takes them apart one inside the other. */
inline void check_lines(const std::string &path, std::string_view text) {
    for (size_t number = 1; !text.empty(); ++number) {
        const size_t length = std::min(text.find('\n'), text.size());
        if (length > kMaxLineBytes) {
            throw io::Error{path + ":" + std::to_string(number) + ": the line has more than " +
                            std::to_string(kMaxLineBytes) + " octets."};
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

inline toml::table parse(const File &file) {
    const std::string text = contents_of(file.path);
    check_lines(file.path, text);
    try {
        return toml::parse(text, file.path);
    } catch (const toml::parse_error &error) {
        file.fail(error.source(), text::on_one_line(error.description()));
    }
}

}  // namespace vdevice::toml_file
