// One fault in four steps.
#include "tests/differential/system_faults.h"

#include <cerrno>
#include <ctime>

#include "calls/describe.h"
#include "tests/differential/driver.h"
#include "tests/differential/random.h"

namespace differential {

void set_faults(fake_system::System &system, uint64_t seed, uint32_t number) {
    constexpr uint32_t kChoices = 24;
    constexpr time_t kStepSeconds = 10;
    Random random(seed ^ 0x5957);
    system.set_time(static_cast<time_t>(number) * kStepSeconds);
    switch (random.below(kChoices)) {
        case 0:
            system.fail_allocation(random.below(2));
            break;
        case 1:
            system.fail("socket", random.one_in(2) ? EPERM : ENOBUFS);
            break;
        case 2:
            system.fail("ioctl", ENODEV);
            break;
        case 3:
            system.fail("sendto", ENETDOWN);
            break;
        case 4:
            system.remove_interface("eth0");
            break;
        case 5:
            system.send_only(random.below(40));
            break;
        default:
            break;
    }
}

void clear_faults(fake_system::System &system) {
    constexpr size_t kNever = 1000000000;
    constexpr int kInterfaceIndex = 7;
    for (const char *call : {"socket", "ioctl", "sendto"}) {
        system.fail(call, 0);
    }
    system.set_interface("eth0", kInterfaceIndex);
    system.fail_allocation(kNever);
}

namespace {

std::string text_of(const fake_system::SentFrame &frame) {
    std::string text = "  to";
    for (const int64_t number :
         {int64_t{frame.family}, int64_t{frame.protocol}, int64_t{frame.interface_index}, int64_t{frame.address_length},
          int64_t{frame.hardware_type}, int64_t{frame.packet_type}, int64_t{frame.hardware_length}}) {
        text += " " + std::to_string(number);
    }
    return text + ": " + calls::hex_text(frame.hardware_address.data(), frame.hardware_address.size()) + " " +
           calls::hex_text(frame.bytes.data(), frame.bytes.size());
}

}  // namespace

void note_system_call(const fake_system::System &system, const std::string &line) {
    driver().note(line);
    if (line.rfind("sendto", 0) == 0 && !system.sent().empty()) {
        driver().note(text_of(system.sent().back()));
    }
}

}  // namespace differential
