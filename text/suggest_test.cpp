// Names that are suggested for others.
#include "text/suggest.h"

#include <gtest/gtest.h>

namespace text {
namespace suggest_test {

TEST(DidYouMean, NamesTheClosestOnesFirst) {
    EXPECT_EQ(did_you_mean("portz", {"vlans", "ports", "macs"}), "; did you mean 'ports'?");
    EXPECT_EQ(did_you_mean("PORTS", {"ports"}, ", "), ", did you mean 'ports'?");
    EXPECT_EQ(did_you_mean("pul", {"plug", "pull"}), "; did you mean 'pull' or 'plug'?");
}

TEST(DidYouMean, IsSilentWhenNoneIsClose) {
    EXPECT_EQ(did_you_mean("quite different", {"ports", "macs"}), "");
    EXPECT_EQ(did_you_mean("", {"ports"}), "");
    EXPECT_EQ(did_you_mean(std::string(65, 'p'), {std::string_view("ports")}), "");
}

}  // namespace suggest_test
}  // namespace text
