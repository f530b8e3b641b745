// The submodules: which slice of the field processor each feature owns, and where its entities are in the hardware.
#include "core/messages.h"
#include "fp/entry.h"
#include "fp/qualifiers.h"

FpInfo g_stFpInfo[ADP_FP_SUBMODULES] = {
    {1, 1, 30, -1, -1, 0},   {2, 1, 30, -1, -1, 30},   {3, 1, 5, 4, 100, 60},    {4, 1, 2, 14, 150, 65},
    {5, 1, 1, 7, 50, 67},    {6, 1, 30, -1, -1, 68},   {7, 1, 2, -1, -1, 126},   {8, 2, 1, -1, -1, 0},
    {9, 2, 2, -1, -1, 1},    {10, 2, 3, 2, 100, 3},    {11, 2, 3, -1, -1, 6},    {12, 2, 20, -1, -1, 9},
    {13, 2, 20, -1, -1, 29}, {14, 2, 1, 10, 50, 49},   {15, 2, 1, 10, 50, 50},   {16, 2, 20, -1, -1, 51},
    {17, 2, 50, -1, -1, 77}, {18, 3, 1, -1, -1, 0},    {19, 3, 1, 5, 100, 1},    {20, 3, 20, -1, -1, 2},
    {21, 3, 30, -1, -1, 22}, {22, 3, 1, 6, 100, 52},   {23, 3, 1, 8, 100, 53},   {24, 3, 31, -1, -1, 54},
    {25, 3, 0, -1, -1, 65},  {26, 3, 2, -1, -1, 65},   {27, 3, 1, -1, -1, 67},   {28, 3, 1, 9, 100, 68},
    {29, 3, 30, -1, -1, 69}, {30, 3, 3, 0, 100, 124},  {31, 4, 30, -1, -1, 0},   {32, 4, 30, -1, -1, 30},
    {33, 4, 30, -1, -1, 60}, {34, 4, 15, -1, -1, 90},  {35, 4, 2, 11, 50, 105},  {36, 4, 1, 12, 50, 107},
    {37, 4, 1, 13, 50, 108}, {38, 5, 50, -1, -1, 0},   {39, 5, 64, -1, -1, 63},  {40, 6, 8, -1, -1, 0},
    {41, 6, 120, -1, -1, 8}, {42, 7, 120, -1, -1, -9}, {43, 9, 120, -1, -1, -9},
};

static_assert(sizeof(FpInfo) == 24);

namespace adp {
namespace {

/** Where a group's entries begin, and how many a rule takes. */
struct Slice {
    uint32_t first;
    uint32_t width;
};

// By group; a group without a slice starts at entry 0.
constexpr Slice kSlices[] = {{0, 1}, {1280, 2}, {896, 1}, {768, 1}, {640, 1}, {1024, 2}, {512, 1}, {384, 1}, {256, 1}};
constexpr uint32_t kSliceCount = sizeof kSlices / sizeof *kSlices;

// The double-wide groups are adjacent in the hardware.
constexpr uint32_t kFirstDoubleEntry = 1024;
constexpr uint32_t kDoubleEntries = 512;

constexpr Message kTrueEntry{{"adp_fp_get_true_entity_id", 864},
                             "%s:[%05d] entry=[%d] group=[%d] prio_base=[%d] true_entry=[%d]-\n"};

}  // namespace

uint32_t true_entry_of(const FpInfo &row, uint32_t entity_id) {
    const auto group = static_cast<uint32_t>(row.group);
    const Slice &slice = kSlices[group < kSliceCount ? group : 0];
    const uint32_t number = static_cast<uint32_t>(row.prio_base) + entity_id;
    const uint32_t entry = slice.width * number + slice.first;
    log_rule(kTrueEntry, entity_id, row.group, row.prio_base, entry);
    return entry;
}

}  // namespace adp

using namespace adp;

// Contract: of two rows with one key the last one is found.
FpInfo *adp_fp_find_data_by_submodetype(uint32_t submodule_type) {
    FpInfo *found = nullptr;
    for (FpInfo &row : g_stFpInfo) {
        if (static_cast<uint32_t>(row.submodule_type) == submodule_type) {
            found = &row;
        }
    }
    return found;
}

FpInfo *fp_find_data_by_submodetype(uint32_t submodule_type) {
    return adp_fp_find_data_by_submodetype(submodule_type);
}

uint32_t adp_fp_get_true_entity_id(FpInfo submodule, uint32_t entity_id) {
    return true_entry_of(submodule, entity_id);
}

int32_t adp_fp_is_double_entity(FpInfo submodule) {
    return is_double(submodule) ? 1 : 0;
}

int32_t adp_fp_is_double_entity_2(uint32_t true_entry) {
    return true_entry - kFirstDoubleEntry < kDoubleEntries ? 1 : 0;
}

int32_t adp_fp_is_need_set_next_entity_id(FpInfo submodule, uint32_t qualify_type) {
    return belongs_on_second_half(submodule, find_qualifier(qualify_type)) ? 1 : 0;
}
