// Heads each test's part of the trace with the test's name.
#include <gtest/gtest.h>

#include "tests/support/trace_file.h"

namespace {

class Listener : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo &test) override {
        trace_file::write(std::string("== ") + test.test_suite_name() + "." + test.name());
    }
};

[[maybe_unused]] const bool is_listening = [] {
    if (trace_file::is_wanted()) {
        ::testing::UnitTest::GetInstance()->listeners().Append(new Listener);
    }
    return true;
}();

}  // namespace
