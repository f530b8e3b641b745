// The driver as a whole: which calls it carries out.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/plain_call.h"
#include "vdevice/chip/testing/document.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace driver_test {

class DriverAsAWhole : public test::DriverTest {
  protected:
    std::vector<std::string> calls_not_carried_out() {
        std::vector<std::string> names;
        for (size_t number = 0; number < calls::kCallCount; ++number) {
            const auto id = static_cast<calls::CallId>(number);
            if (is_answered(id) && dispatch(driver_, id, PlainCall(id).arguments()) == kNotSupported) {
                names.emplace_back(calls::call(id).name);
            }
        }
        return names;
    }
};

TEST_F(DriverAsAWhole, CarriesOutEveryCallButTheDocumentedOne) {
    const std::vector<std::string> names = calls_not_carried_out();
    EXPECT_THAT(names, testing::ElementsAre("user_l2_mactable_fread"));
    for (const std::string &name : names) {
        chip::test::expect_row("mac-table.md", "| `" + name + "` | `not_supported`");
    }
}

}  // namespace driver_test
}  // namespace vdevice::driver
