// Prints what can be asked of a device, as JSON: for the generated pages, which are made without a running device.
#include <iostream>
#include <nlohmann/json.hpp>

#include "vdevice/inspect/subject.h"

int main() {
    std::cout << vdevice::inspect::list_subjects() << '\n';
    return std::cout.good() ? 0 : 1;
}
