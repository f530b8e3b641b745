// The submodules of the field processor, and where in the chip their rules stand.
#include <algorithm>

#include "tests/differential/reference/log.h"

namespace reference {
namespace {

/** Type, group, entries, meter base, meter rate, place in the group. */
constexpr FpInfo kSubmodules[] = {
    {1, 1, 30, -1, -1, 0},   {2, 1, 30, -1, -1, 30},   {3, 1, 5, 4, 100, 60},   {4, 1, 2, 14, 150, 65},
    {5, 1, 1, 7, 50, 67},    {6, 1, 30, -1, -1, 68},   {7, 1, 2, -1, -1, 126},  {8, 2, 1, -1, -1, 0},
    {9, 2, 2, -1, -1, 1},    {10, 2, 3, 2, 100, 3},    {11, 2, 3, -1, -1, 6},   {12, 2, 20, -1, -1, 9},
    {13, 2, 20, -1, -1, 29}, {14, 2, 1, 10, 50, 49},   {15, 2, 1, 10, 50, 50},  {16, 2, 20, -1, -1, 51},
    {17, 2, 50, -1, -1, 77}, {18, 3, 1, -1, -1, 0},    {19, 3, 1, 5, 100, 1},   {20, 3, 20, -1, -1, 2},
    {21, 3, 30, -1, -1, 22}, {22, 3, 1, 6, 100, 52},   {23, 3, 1, 8, 100, 53},  {24, 3, 31, -1, -1, 54},
    {25, 3, 0, -1, -1, 65},  {26, 3, 2, -1, -1, 65},   {27, 3, 1, -1, -1, 67},  {28, 3, 1, 9, 100, 68},
    {29, 3, 30, -1, -1, 69}, {30, 3, 3, 0, 100, 124},  {31, 4, 30, -1, -1, 0},  {32, 4, 30, -1, -1, 30},
    {33, 4, 30, -1, -1, 60}, {34, 4, 15, -1, -1, 90},  {35, 4, 2, 11, 50, 105}, {36, 4, 1, 12, 50, 107},
    {37, 4, 1, 13, 50, 108}, {38, 5, 50, -1, -1, 0},   {39, 5, 64, -1, -1, 63}, {40, 6, 8, -1, -1, 0},
    {41, 6, 120, -1, -1, 8}, {42, 7, 120, -1, -1, -9}, {43, 9, 120, -1, -1, -9}};

}  // namespace

FpInfo *adp_fp_find_data_by_submodetype(uint32_t type) {
    static FpInfo found;
    for (const FpInfo &row : kSubmodules) {
        if (static_cast<uint32_t>(row.submodule_type) == type) {
            found = row;
            return &found;
        }
    }
    return nullptr;
}

uint32_t adp_fp_get_true_entity_id(FpInfo row, uint32_t entity_id) {
    const uint32_t n = static_cast<uint32_t>(row.prio_base) + entity_id;
    const uint32_t base[] = {0, 1280, 896, 768, 640, 1024, 512, 384, 256};
    uint32_t entry = row.group >= 1 && row.group <= 8 ? n + base[row.group] : n;
    if (row.group == 1 || row.group == 5) {
        entry += n;
    }
    log("%s:[%05d] entry=[%d] group=[%d] prio_base=[%d] true_entry=[%d]-\n", "adp_fp_get_true_entity_id", 864,
        entity_id, row.group, row.prio_base, entry);
    return entry;
}

int32_t adp_fp_is_double_entity(FpInfo row) {
    return row.group == 1 || row.group == 5 ? 1 : 0;
}

int32_t adp_fp_is_double_entity_2(uint32_t true_entry) {
    return true_entry >= 1024 && true_entry <= 1535 ? 1 : 0;
}

int32_t adp_fp_is_need_set_next_entity_id(FpInfo row, uint32_t qualify_type) {
    const std::vector<uint32_t> group1 = {9, 10, 27, 28, 31, 61, 332};
    const std::vector<uint32_t> group5 = {1, 27, 28, 30};
    const std::vector<uint32_t> types = row.group == 1 ? group1 : row.group == 5 ? group5 : std::vector<uint32_t>{};
    return std::find(types.begin(), types.end(), qualify_type) != types.end() ? 1 : 0;
}

}  // namespace reference
