// For tests: what the pages of docs/reference say.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace vdevice::chip::test {

/** The page has a line that begins so. */
inline void expect_row(const std::string &page, const std::string &row) {
    std::ifstream file{VDEVICE_REFERENCE "/" + page};
    ASSERT_TRUE(file) << page;
    std::stringstream text;
    text << '\n' << file.rdbuf();
    EXPECT_NE(text.str().find('\n' + row), std::string::npos) << page << " lacks: " << row;
}

}  // namespace vdevice::chip::test
