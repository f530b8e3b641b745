// A management program that makes random calls: the default board's map, the start of all modules, then calls with
// arguments that are mostly sensible. The same seed makes the same calls on every machine, whatever the driver answers.
#include <adp/adp.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "calls/exported.h"
#include "examples/board.h"
#include "tests/differential/arguments.h"
#include "tests/differential/random.h"

namespace {

using differential::Random;

/**
 * What a random life leaves out: the map, without which nothing else succeeds; frames, which would make the chip learn
 * from what a replay does not send; and the appending of numbers of odd lengths to a rule's record, which only means
 * the same on machines of one byte order.
 */
bool may_be_made(std::string_view name) {
    constexpr std::array kLeftOut = {"adp_set_max_phy_port_num", "adp_add_phy_port",     "adp_add_cpu_port",
                                     "adp_transmit_frame",       "__adp_transmit_frame", "adp_pkt_init",
                                     "adp_dump_packet",          "get_nic_index",        "adp_fp_add_entity_qualify",
                                     "adp_fp_add_entity_action"};
    return std::find(kLeftOut.begin(), kLeftOut.end(), name) == kLeftOut.end();
}

std::vector<const exported::Call *> choice_of_calls() {
    std::vector<const exported::Call *> chosen;
    for (const exported::Call &call : exported::calls()) {
        if (may_be_made(call.name)) {
            chosen.push_back(&call);
        }
    }
    return chosen;
}

void live(uint64_t seed, size_t count) {
    const auto choice = choice_of_calls();
    Random random(seed);
    for (size_t made = 0; made < count; ++made) {
        const exported::Call &call = *choice[random.below(static_cast<uint32_t>(choice.size()))];
        const differential::Arguments arguments(call, uint64_t{random.next()} << 32 | random.next(), {});
        exported::invoke(call, call.function, arguments.pointers());
    }
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: random_life SEED CALLS\n");
        return 2;
    }
    if (set_up_board() != ADP_OK || adp_modules_init() != ADP_OK) {
        std::fprintf(stderr, "random_life: the board could not be set up.\n");
        return EXIT_FAILURE;
    }
    live(std::strtoull(argv[1], nullptr, 10), std::strtoul(argv[2], nullptr, 10));
    return EXIT_SUCCESS;
}
