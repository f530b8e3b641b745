// Writes the name of each test into the trace.
#include <gtest/gtest.h>

#include "tests/support/trace_file.h"

namespace {

class Listener : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo &test) override {
        trace_file::write(std::string("== ") + test.test_suite_name() + "." + test.name());
    }
};

[[maybe_unused]] const bool is_listening = [] {
    if (trace_file::is_enabled()) {
        ::testing::UnitTest::GetInstance()->listeners().Append(new Listener);
    }
    return true;
}();

}  // namespace
