/**
 * @file parts.h
 * A recording part by part, in bounded memory, also while it is written.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adptrace/recording/line.h"

namespace adptrace {

/** A call that is within none, with all that is within it; or a line that is within no call. */
struct Part {
    std::string text; /**< a recording of its own: the header, the line of the process, and the part's lines */
    std::vector<size_t> numbers; /**< of these lines in the whole recording */
    size_t first = 0;            /**< number of the part's first line */
    bool is_call = false;
    size_t left_out = 0; /**< calls within it that there was no room for */
};

/** Lines go in, parts come out when they are whole, in the order of their ends. */
class Parts {
  public:
    struct Limits {
        size_t in_call = size_t{4} << 20; /**< octets within a call */
        size_t kept = size_t{64} << 20;   /**< of all calls that have not ended */
        size_t processes = 4096;          /**< that are known at a time */
    };

    explicit Parts(std::function<void(Part part)> take) : Parts(std::move(take), Limits{}) {}
    Parts(std::function<void(Part part)> take, const Limits &limits) : take_(std::move(take)), limits_(limits) {}

    /** Throws BadRecording. */
    void add(std::string_view text);
    /** Gives the calls that have not ended. */
    void finish();
    /** Whether the process that was recorded has ended. */
    [[nodiscard]] bool has_ended() const { return has_ended_; }
    [[nodiscard]] bool has_processes() const { return has_processes_; }
    /** The number of the line that comes next. */
    [[nodiscard]] size_t next_number() const { return number_ + 1; }

  private:
    /** A call that is within none and has not ended. */
    struct Root {
        std::string text;
        std::vector<size_t> numbers;
        std::vector<uint64_t> calls; /**< their numbers, its own first */
        size_t left_out = 0;
    };
    struct Process {
        std::string line;
        size_t number;
        size_t latest;                     /**< number of its latest line */
        std::map<uint32_t, Root> roots;    /**< by thread */
        std::map<uint64_t, uint32_t> open; /**< threads of calls that have not ended, by number */
    };

    void add_process(const Line &line, std::string_view text);
    void add_begin(Process &process, const Line &line, std::string_view text);
    void add_end(Process &process, const Line &line, std::string_view text);
    void add_frame(Process &process, const Line &line, std::string_view text);
    void add_exit(Process &process, const Line &line, std::string_view text);
    static void open_call(Process &process, uint32_t thread, const Line &line);
    void keep(Root &root, std::string_view text);
    void keep_within(Process &process, const Line &line, std::string_view text);
    void hand_on_line(const Process &process, std::string_view text);
    void hand_on(Process &process, uint32_t thread);
    void hand_on_all(Process &process);
    void hand_on_oldest();
    void forget_a_process();
    Process &process_of(const Line &line, const char *member);

    std::function<void(Part part)> take_;
    Limits limits_;
    std::string header_;
    std::map<int64_t, Process> processes_; /**< by id */
    int64_t first_ = 0;                    /**< id of the process whose lines have no `of` */
    size_t number_ = 0;
    size_t kept_ = 0; /**< octets */
    bool has_ended_ = false;
    bool has_processes_ = false;
};

}  // namespace adptrace
