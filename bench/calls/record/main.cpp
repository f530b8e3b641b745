// Records every call of the library against a driver that succeeds, and writes the calls and what they call in turn as
// a C program's tables: record ANSWERS ROWS OUTPUT.c OUTPUT.json.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include "bench/calls/record/cases.h"
#include "bench/calls/record/driver_calls.h"
#include "bench/calls/record/writer.h"
#include "tests/support/fake_system.h"
#include "tests/support/silence.h"

namespace {

void record_all(char **arguments) {
    enum Argument { kProgram, kAnswers, kRows, kCode, kJsonFile };
    record::answer_from(arguments[kAnswers]);
    const fake_system::Session session;
    const silence::Silence silence;
    record::Writer writer;
    for (const record::Case &one : record::all_cases(arguments[kRows])) {
        try {
            writer.add(one);
        } catch (const std::exception &error) {
            throw std::runtime_error(one.call + ": " + error.what());
        }
    }
    writer.require_all();
    writer.write(arguments[kCode], arguments[kJsonFile]);
}

}  // namespace

int main(int count, char **arguments) {
    constexpr int kArguments = 5;
    if (count != kArguments) {
        std::fprintf(stderr, "usage: record ANSWERS ROWS OUTPUT.c OUTPUT.json\n");
        return EXIT_FAILURE;
    }
    try {
        record_all(arguments);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "record: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
