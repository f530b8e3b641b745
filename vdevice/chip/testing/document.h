// For tests: what docs/virtual-device.md says.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace vdevice::chip::test {

/** The document has a line that begins so. */
inline void expect_row(const std::string &row) {
    std::ifstream file{VDEVICE_DOCUMENT};
    ASSERT_TRUE(file) << VDEVICE_DOCUMENT;
    std::stringstream text;
    text << '\n' << file.rdbuf();
    EXPECT_NE(text.str().find('\n' + row), std::string::npos) << "missing: " << row;
}

}  // namespace vdevice::chip::test
