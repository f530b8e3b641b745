/**
 * @file recording.h
 * A recording in memory. The text is checked whole as it is read, and mistrusted: docs/reference/recordings.md.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace adptrace {

inline constexpr int32_t kVersion = 1;
inline constexpr size_t kMaxLine = size_t{1} << 20;
inline constexpr size_t kNone = SIZE_MAX;

/** A text that is no recording; what() is a sentence with the number of the line. */
class BadRecording : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Header {
    bool is_big_endian = false;
    uint32_t word_bits = 0;
    std::string started;
    std::vector<std::string> command;
};

/** A process, as long as it runs one program: after exec it is another one with the same id. */
struct Process {
    int64_t id = 0;
    int64_t parent = 0;
    int64_t at = 0;
    std::string program;
    std::string library; /**< the build id, empty if unknown */
    size_t line = 0;
    std::optional<int32_t> status;
    std::optional<int32_t> signal;
    int64_t ended = 0;    /**< if there is a status or a signal */
    size_t exit_line = 0; /**< likewise */
};

/** The most calls that may be within each other. */
inline constexpr uint32_t kMaxDepth = 200;

/** One call of either boundary. */
struct Call {
    enum class Kind : uint8_t { kLibrary, kImported, kUnknown };

    std::string_view name;
    Kind kind = Kind::kUnknown;
    size_t process = 0;    /**< index in processes() */
    uint64_t number = 0;   /**< in its process */
    uint32_t thread = 0;   /**< in its process */
    size_t within = kNone; /**< index in calls(), below the call's own */
    uint32_t depth = 0;    /**< the calls around it */
    size_t line = 0;       /**< of the beginning, from 1 */
    int64_t began = 0;     /**< nanoseconds since the header */
    int64_t ended = 0;
    bool has_returned = false;
    std::string_view begin_text; /**< the lines as they stand in the recording */
    std::string_view end_text;
};

struct Frame {
    bool is_sent = false;
    size_t process = 0;
    uint32_t thread = 0;
    size_t within = kNone;
    size_t before = 0; /**< index of the call that begins next */
    int64_t at = 0;
    size_t line = 0;
    std::string interface;
    std::string octets; /**< hexadecimal text */
};

/** The port map at some time. */
struct Board {
    size_t process = 0;
    size_t before = 0; /**< index of the call that begins next */
    int64_t at = 0;
    size_t line = 0;
    std::string_view text;
};

class Recording {
  public:
    /** The numbers are those of the text's lines, from 1 on if there are none. Throws BadRecording. */
    explicit Recording(std::string text, const std::vector<size_t> &numbers = {});
    /** Of a file, "-" for standard input, with its name in the sentence. Throws BadRecording. */
    static Recording of_file(const std::string &name);
    Recording(Recording &&) = default;
    Recording &operator=(Recording &&) = default;

    [[nodiscard]] const Header &header() const { return header_; }
    [[nodiscard]] const std::vector<Process> &processes() const { return processes_; }
    /** In the order of their beginning. */
    [[nodiscard]] const std::vector<Call> &calls() const { return calls_; }
    [[nodiscard]] const std::vector<Frame> &frames() const { return frames_; }
    [[nodiscard]] const std::vector<Board> &boards() const { return boards_; }
    /** Whether the last line is cut. */
    [[nodiscard]] bool is_cut() const { return is_cut_; }
    /** The whole text, which the views are parts of. */
    [[nodiscard]] std::string_view text() const { return *text_; }

  private:
    friend class Reader;

    std::unique_ptr<const std::string> text_; /**< the views are into it, also after a move */
    Header header_;
    std::vector<Process> processes_;
    std::vector<Call> calls_;
    std::vector<Frame> frames_;
    std::vector<Board> boards_;
    bool is_cut_ = false;
};

/** @name What a call's lines say. They are parsed anew with each look. */
/** @{ */
nlohmann::json arguments_of(const Call &call);
/** An empty object for a call that has not returned. */
nlohmann::json outputs_of(const Call &call);
nlohmann::json result_of(const Call &call);
/** The whole line of the end; of a call that has returned. */
nlohmann::json end_of(const Call &call);
/** Whether the call says that it failed: by its result, and what the header says of it. */
bool has_failed(const Call &call);
/** Likewise, for one that has returned this. */
bool has_failed(const Call &call, const nlohmann::json &result);
/** @} */

}  // namespace adptrace
