// The tables of the field processor, written a second time for the tests: rows are compared with the library's,
// and expected calls and log lines are made from these.
#pragma once

#include <stdint.h>
#include <algorithm>
#include <iterator>

namespace fp_test {

struct Submodule {
    int32_t type;
    int32_t group;
    int32_t entries;
    int32_t meter_base;
    int32_t meter_rate;
    int32_t prio_base;
};

inline constexpr Submodule kSubmodules[] = {
    {1, 1, 30, -1, -1, 0},     //
    {2, 1, 30, -1, -1, 30},    //
    {3, 1, 5, 4, 100, 60},     //
    {4, 1, 2, 14, 150, 65},    //
    {5, 1, 1, 7, 50, 67},      //
    {6, 1, 30, -1, -1, 68},    //
    {7, 1, 2, -1, -1, 126},    //
    {8, 2, 1, -1, -1, 0},      //
    {9, 2, 2, -1, -1, 1},      //
    {10, 2, 3, 2, 100, 3},     //
    {11, 2, 3, -1, -1, 6},     //
    {12, 2, 20, -1, -1, 9},    //
    {13, 2, 20, -1, -1, 29},   //
    {14, 2, 1, 10, 50, 49},    //
    {15, 2, 1, 10, 50, 50},    //
    {16, 2, 20, -1, -1, 51},   //
    {17, 2, 50, -1, -1, 77},   //
    {18, 3, 1, -1, -1, 0},     //
    {19, 3, 1, 5, 100, 1},     //
    {20, 3, 20, -1, -1, 2},    //
    {21, 3, 30, -1, -1, 22},   //
    {22, 3, 1, 6, 100, 52},    //
    {23, 3, 1, 8, 100, 53},    //
    {24, 3, 31, -1, -1, 54},   //
    {25, 3, 0, -1, -1, 65},    //
    {26, 3, 2, -1, -1, 65},    //
    {27, 3, 1, -1, -1, 67},    //
    {28, 3, 1, 9, 100, 68},    //
    {29, 3, 30, -1, -1, 69},   //
    {30, 3, 3, 0, 100, 124},   //
    {31, 4, 30, -1, -1, 0},    //
    {32, 4, 30, -1, -1, 30},   //
    {33, 4, 30, -1, -1, 60},   //
    {34, 4, 15, -1, -1, 90},   //
    {35, 4, 2, 11, 50, 105},   //
    {36, 4, 1, 12, 50, 107},   //
    {37, 4, 1, 13, 50, 108},   //
    {38, 5, 50, -1, -1, 0},    //
    {39, 5, 64, -1, -1, 63},   //
    {40, 6, 8, -1, -1, 0},     //
    {41, 6, 120, -1, -1, 8},   //
    {42, 7, 120, -1, -1, -9},  //
    {43, 9, 120, -1, -1, -9},  //
};

/** The last row of a type, or null. */
inline const Submodule *submodule(uint32_t type) {
    const auto found = std::find_if(std::rbegin(kSubmodules), std::rend(kSubmodules),
                                    [&](const Submodule &row) { return static_cast<uint32_t>(row.type) == type; });
    return found == std::rend(kSubmodules) ? nullptr : &*found;
}

/** How a call is given data and mask. */
enum class Takes : uint8_t { kBytes, kWord, kLow16, kLow8, kWordAlone, kPorts };

struct QualifierRow {
    uint32_t type;
    const char *call;
    Takes takes;
    const char *message;
    int line;
};

inline constexpr QualifierRow kQualifiers[] = {
    {0, "user_field_qualify_SrcIp6", Takes::kBytes, "%s:[%05d] srcip6 i=[%d] ret=[%d] fent=[%d]-------\n", 1126},
    {1, "user_field_qualify_DstIp6", Takes::kBytes, "%s:[%05d] dstip6 i=[%d] ret=[%d] fent=[%d]-------\n", 1131},
    {6, "user_field_qualify_SrcMac", Takes::kBytes, "%s:[%05d]  smac i=[%d] ret=[%d] fent=[%d]-------\n", 1034},
    {7, "user_field_qualify_DstMac", Takes::kBytes, "%s:[%05d]  dmac i=[%d] ret=[%d] fent=[%d]-------\n", 1029},
    {9, "user_field_qualify_SrcIp", Takes::kWord, "%s:[%05d]  src-ip i=[%d] ret=[%d] fent=[%d]-------\n", 1086},
    {10, "user_field_qualify_DstIp", Takes::kWord, "%s:[%05d]  dst-ip i=[%d] ret=[%d] fent=[%d]-------\n", 1081},
    {13, "user_field_qualify_InPorts", Takes::kPorts, "%s:[%05d]  inports i=[%d] ret=[%d] fent=[%d] ------\n", 1024},
    {18, "user_field_qualify_OuterVlanId", Takes::kLow16, "%s:[%05d]  ovlan ID i=[%d] ret=[%d] fent=[%d]-------\n",
     1058},
    {19, "user_field_qualify_OuterVlanPri", Takes::kLow8, "%s:[%05d]  ovlan pri i=[%d] ret=[%d] fent=[%d]-------\n",
     1042},
    {21, "user_field_qualify_InnerVlan", Takes::kLow16, "%s:[%05d]  ivlan format i=[%d] ret=[%d] fent=[%d]-------\n",
     1071},
    {22, "user_field_qualify_InnerVlanId", Takes::kLow16, "%s:[%05d]  ivlan ID i=[%d] ret=[%d] fent=[%d]-------\n",
     1066},
    {23, "user_field_qualify_InnerVlanPri", Takes::kLow8, "%s:[%05d]  ivlan pri i=[%d] ret=[%d] fent=[%d]-------\n",
     1050},
    {27, "user_field_qualify_L4SrcPort", Takes::kWord, "%s:[%05d]  l4-src-port i=[%d] ret=[%d] fent=[%d]-------\n",
     1106},
    {28, "user_field_qualify_L4DstPort", Takes::kWord, "%s:[%05d]  l4-dst-port i=[%d] ret=[%d] fent=[%d]-------\n",
     1111},
    {29, "user_field_qualify_EtherType", Takes::kLow16, "%s:[%05d]  ethertype i=[%d] ret=[%d] fent=[%d]-------\n",
     1076},
    {30, "user_field_qualify_IpProtocol", Takes::kLow8, "%s:[%05d]  ip-proto i=[%d] ret=[%d] fent=[%d]-------\n", 1091},
    {31, "user_field_qualify_DSCP", Takes::kLow8, "%s:[%05d]  dscp i=[%d] ret=[%d] fent=[%d]-------\n", 1096},
    {61, "user_field_qualify_iptype", Takes::kWordAlone, "%s:[%05d]  ip-type i=[%d] ret=[%d] fent=[%d]-------\n", 1116},
    {89, "user_field_qualify_FrameType", Takes::kWordAlone, "%s:[%05d]  frametype i=[%d] ret=[%d] fent=[%d]-------\n",
     1121},
    {332, "user_field_qualify_Ip6TrafficClass", Takes::kLow8,
     "%s:[%05d]  ip6-traffic i=[%d] ret=[%d] fent=[%d]-------\n", 1101},
};

inline constexpr uint32_t kSecondHalfOfGroup1[] = {9, 10, 27, 28, 31, 61, 332};
inline constexpr uint32_t kSecondHalfOfGroup5[] = {1, 27, 28, 30};

inline bool is_on_second_half(int32_t group, uint32_t type) {
    const auto has = [&](const auto &types) {
        return std::find(std::begin(types), std::end(types), type) != std::end(types);
    };
    return (group == 1 && has(kSecondHalfOfGroup1)) || (group == 5 && has(kSecondHalfOfGroup5));
}

}  // namespace fp_test
