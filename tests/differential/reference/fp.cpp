// The field processor: submodules, records, the list of rules, installation and removal, counters, remark rules.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

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

// The format is a parameter so that every log point stands in one line; all values are numbers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <typename... Values>
void log(const char *format, const char *name, int line, Values... values) {
    if (sys_trace_get() != 0) {
        char prefix[256] = "";
        char message[256] = "";
        snprintf(prefix, sizeof prefix, "%s():%d", name, line);
        snprintf(message, sizeof message, format, name, line, static_cast<int>(values)...);
        sys_trace_add_log(prefix, message);
    }
    Log_logging_func(7, 18, "ACL", format, name, line, static_cast<int>(values)...);
}
#pragma GCC diagnostic pop

uint32_t word_of(const uint8_t *bytes) {
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

void put_word(uint8_t *bytes, uint32_t word) {
    std::memcpy(bytes, &word, sizeof word);
}

}  // namespace

adp_status_t adp_fp_init() {
    tables.rules.clear();
    if (user_field_init(0, 0) >= 0) {
        return 0;
    }
    printf("%s:[%05d]  error funtion ret=%d \n", "adp_fp_init", 428, user_field_init(0, 0));
    return user_field_init(0, 0);
}

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

FpInfo *fp_find_data_by_submodetype(uint32_t type) {
    return adp_fp_find_data_by_submodetype(type);
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

FpListNode *adp_fp_find_list_node_by_entity(uint32_t submodule_type, uint32_t entity_id) {
    for (FpListNode *node : tables.rules) {
        if (node->entity.submodule_type == submodule_type && node->entity.entity_id == entity_id) {
            return node;
        }
    }
    return nullptr;
}

// Records

namespace {

void fill_field(uint8_t *field, const void *from, uint32_t length) {
    if (length == 2) {
        uint16_t number = 0;
        std::memcpy(&number, from, sizeof number);
        put_word(field, number);
    } else if (length != 0) {
        std::memcpy(field, from, length);
    }
}

}  // namespace

int32_t adp_fp_add_entity_qualify(FpEntity *e, uint32_t type, const void *data, uint32_t data_len, const void *mask,
                                  int32_t mask_len) {
    if (e->qualify_num >= 16) {
        printf("%s:[%05d] Fp qualify number=[%d] was full!~\n", "adp_fp_add_entity_qualify", 674, e->qualify_num);
        return -1;
    }
    if (e->qualify_num < 0 || data_len > 64 || mask_len < 0 || mask_len > 64) {
        return -1;
    }
    FpQualify &qualify = e->qualifies[e->qualify_num];
    qualify.type = type;
    fill_field(qualify.data, data, data_len);
    fill_field(qualify.mask, mask, static_cast<uint32_t>(mask_len));
    return e->qualify_num++;
}

int32_t adp_fp_add_entity_action(FpEntity *e, uint32_t type, const void *param, int32_t param_len, const void *param2,
                                 int32_t param2_len) {
    if (e->action_num >= 8) {
        printf("%s:[%05d] Fp qualify number=[%d] was full!~\n", "adp_fp_add_entity_action", 720, e->qualify_num);
        return -1;
    }
    if (e->action_num < 0 || (param != nullptr && param_len > 256) || (param2 != nullptr && param2_len > 256)) {
        return -1;
    }
    FpAction &action = e->actions[e->action_num];
    action.type = type;
    if (param != nullptr && param_len > 0) {
        std::memcpy(action.param, param, static_cast<size_t>(param_len));
    }
    if (param2 != nullptr && param2_len > 0) {
        std::memcpy(action.param2, param2, static_cast<size_t>(param2_len));
    }
    return e->action_num++;
}

// Removal

namespace {

int32_t clear_entry(uint32_t entry) {
    int32_t result = user_field_action_remove_all(0, 0, entry);
    result |= user_field_qualify_clear(0, 0, entry);
    return result | user_field_entry_destroy(0, 0, entry);
}

int32_t remove_rule(FpListNode *node, uint32_t meters, const char *name, int line, int double_line) {
    if (node == nullptr) {
        return 0;
    }
    const uint32_t entry = node->entity.true_entry;
    const uint32_t entity = node->entity.entity_id;
    log("%s:[%05d] del entry=[%d] true_entry=[%d]\n", name, line, entity, entry);
    int32_t result = 0;
    for (uint32_t n = 0; n < meters; ++n) {
        result |= user_field_meter_destroy(0, 0, entry);
    }
    result |= clear_entry(entry);
    if (adp_fp_is_double_entity_2(entry) != 0) {
        log("%s:[%05d] del double entry=[%d] true_entry=[%d]\n", name, double_line, entity, entry + 1);
        result |= clear_entry(entry + 1);
    }
    tables.rules.erase(std::find(tables.rules.begin(), tables.rules.end(), node));
    std::free(node);
    return result;
}

uint32_t meters_of(const FpEntity &entity) {
    const int32_t count = std::min(entity.action_num, 8);
    return static_cast<uint32_t>(std::count_if(entity.actions, entity.actions + std::max(count, 0),
                                               [](const FpAction &action) { return action.type == 53; }));
}

}  // namespace

adp_status_t adp_fp_delete_entity_rule(uint32_t submodule_type, uint32_t entity_id, uint32_t action_type) {
    return remove_rule(adp_fp_find_list_node_by_entity(submodule_type, entity_id), action_type == 53 ? 1 : 0,
                       "adp_fp_delete_entity_rule", 547, 567);
}

adp_status_t adp_fp_delete_entity_rule_ex(FpEntity entity) {
    return remove_rule(adp_fp_find_list_node_by_entity(entity.submodule_type, entity.entity_id), meters_of(entity),
                       "adp_fp_delete_entity_rule_ex", 612, 636);
}

// Installation

namespace {

constexpr char kInstall[] = "adp_fp_add_entity_rule";
constexpr char kEntryLog[] = "%s:[%05d]  ---------ret=[%d] fent=[%d] fent+1=[%d]-------\n";

template <typename... Values>
void log_step(const char *format, int line, Values... values) {
    log(format, kInstall, line, values...);
}

PortSet translated(uint32_t unit, const uint8_t *bytes) {
    uint32_t words[8];
    std::memcpy(words, bytes, sizeof words);
    // There is one slot, 0: with another unit no interface belongs to it.
    return unit == 0 ? to_physical(PortSet::from(words)) : PortSet{};
}

adp_port_set_t as_block(const PortSet &set) {
    adp_port_set_t block;
    std::memcpy(block.word, set.word.data(), sizeof block.word);
    return block;
}

enum class Form { kPointer, kWord, kLow16, kLow8, kNoMask, kPorts };
struct Qualifier {
    uint32_t type;
    Form form;
    const char *format;
    int line;
    int32_t (*by_pointer)(int32_t, uint32_t, uint32_t, const uint8_t *, const uint8_t *);
    int32_t (*by_word)(int32_t, uint32_t, uint32_t, uint32_t, uint32_t);
    int32_t (*without_mask)(int32_t, uint32_t, uint32_t, uint32_t);
};
#define LOGS(text) "%s:[%05d]" text " i=[%d] ret=[%d] fent=[%d]-------\n"
constexpr Qualifier kQualifiers[] = {
    {0, Form::kPointer, LOGS(" srcip6"), 1126, user_field_qualify_SrcIp6, nullptr, nullptr},
    {1, Form::kPointer, LOGS(" dstip6"), 1131, user_field_qualify_DstIp6, nullptr, nullptr},
    {6, Form::kPointer, LOGS("  smac"), 1034, user_field_qualify_SrcMac, nullptr, nullptr},
    {7, Form::kPointer, LOGS("  dmac"), 1029, user_field_qualify_DstMac, nullptr, nullptr},
    {9, Form::kWord, LOGS("  src-ip"), 1086, nullptr, user_field_qualify_SrcIp, nullptr},
    {10, Form::kWord, LOGS("  dst-ip"), 1081, nullptr, user_field_qualify_DstIp, nullptr},
    {13, Form::kPorts, "%s:[%05d]  inports i=[%d] ret=[%d] fent=[%d] ------\n", 1024, nullptr, nullptr, nullptr},
    {18, Form::kLow16, LOGS("  ovlan ID"), 1058, nullptr, user_field_qualify_OuterVlanId, nullptr},
    {19, Form::kLow8, LOGS("  ovlan pri"), 1042, nullptr, user_field_qualify_OuterVlanPri, nullptr},
    {21, Form::kLow16, LOGS("  ivlan format"), 1071, nullptr, user_field_qualify_InnerVlan, nullptr},
    {22, Form::kLow16, LOGS("  ivlan ID"), 1066, nullptr, user_field_qualify_InnerVlanId, nullptr},
    {23, Form::kLow8, LOGS("  ivlan pri"), 1050, nullptr, user_field_qualify_InnerVlanPri, nullptr},
    {27, Form::kWord, LOGS("  l4-src-port"), 1106, nullptr, user_field_qualify_L4SrcPort, nullptr},
    {28, Form::kWord, LOGS("  l4-dst-port"), 1111, nullptr, user_field_qualify_L4DstPort, nullptr},
    {29, Form::kLow16, LOGS("  ethertype"), 1076, nullptr, user_field_qualify_EtherType, nullptr},
    {30, Form::kLow8, LOGS("  ip-proto"), 1091, nullptr, user_field_qualify_IpProtocol, nullptr},
    {31, Form::kLow8, LOGS("  dscp"), 1096, nullptr, user_field_qualify_DSCP, nullptr},
    {61, Form::kNoMask, LOGS("  ip-type"), 1116, nullptr, nullptr, user_field_qualify_iptype},
    {89, Form::kNoMask, LOGS("  frametype"), 1121, nullptr, nullptr, user_field_qualify_FrameType},
    {332, Form::kLow8, LOGS("  ip6-traffic"), 1101, nullptr, user_field_qualify_Ip6TrafficClass, nullptr}};

/** One installation under way: the record, its row, and the running status. */
struct Installation {
    FpEntity rule;
    FpInfo row{};
    uint32_t fent = 0;
    bool is_double = false;
    int32_t status = 0;

    void create() {
        const int32_t priority = static_cast<int32_t>(static_cast<uint32_t>(row.prio_base) + rule.priority);
        log_step("%s:[%05d] unit=[%d] fg=[%d] fent=[%d]------------\n", 954, rule.unit, row.group, fent);
        status = user_field_entry_create_id(0, rule.unit, row.group, fent);
        if (is_double) {
            status |= user_field_entry_create_id(0, rule.unit, row.group, fent + 1);
        }
        log_step("%s:[%05d] create entry [%d] ret=[%d] ------------\n", 960, fent, status);
        status |= user_field_entry_prio_set(0, rule.unit, fent, priority);
        if (is_double) {
            user_field_entry_prio_set(0, rule.unit, fent + 1, priority);
            status = user_field_set_double_entry(0, rule.unit, fent);
            log_step(kEntryLog, 969, status, fent, fent + 1);
        }
        log_step("%s:[%05d] set entry [%d] priority=[%d] ret=[%d] ------------\n", 971, fent, priority, status);
    }

    int32_t apply(const Qualifier &how, const FpQualify &qualify, uint32_t target) const {
        const uint32_t cut = how.form == Form::kLow16 ? 0xFFFF : how.form == Form::kLow8 ? 0xFF : 0xFFFFFFFF;
        switch (how.form) {
            case Form::kPointer:
                return how.by_pointer(0, rule.unit, target, qualify.data, qualify.mask);
            case Form::kNoMask:
                return how.without_mask(0, rule.unit, target, word_of(qualify.data));
            case Form::kPorts:
                return user_field_qualify_InPorts(0, rule.unit, target, as_block(translated(rule.unit, qualify.data)),
                                                  as_block(translated(rule.unit, qualify.mask)));
            default:
                return how.by_word(0, rule.unit, target, word_of(qualify.data) & cut, word_of(qualify.mask) & cut);
        }
    }

    void add_qualifier(int32_t i) {
        const FpQualify &qualify = rule.qualifies[i];
        uint32_t target = fent + 1;
        if (reference::adp_fp_is_need_set_next_entity_id(row, qualify.type) == 0) {
            status = user_field_set_select_tempate_idx(0, rule.unit, fent, 0);
            target = fent;
        }
        log_step("%s:[%05d]  ---------i=[%d] type=[%d] ret=[%d]-------\n", 995, i, qualify.type, status);
        for (const Qualifier &how : kQualifiers) {
            if (how.type != qualify.type) {
                continue;
            }
            target = how.form == Form::kPorts ? fent : target;
            const int32_t result = apply(how, qualify, target);
            status = how.form == Form::kPorts ? status | result : result;
            log_step(how.format, how.line, i, status, target);
            return;
        }
        printf("%s:[%05d] set unknow qualify type = [%d]\n", kInstall, 1135, static_cast<int>(qualify.type));
    }

    /** The parameter of the action whose number is the running status; nothing outside the record. */
    [[nodiscard]] uint8_t *param_of_status() {
        return status >= 0 && status < 8 ? rule.actions[status].param : nullptr;
    }

    void prepare_action(FpAction &action) {
        if (action.type == 53) {
            const uint32_t given = word_of(action.param);
            const uint32_t rate = given != 0 ? given : static_cast<uint32_t>(row.meter_rate);
            const uint32_t meter = word_of(action.param2) + static_cast<uint32_t>(row.meter_base);
            put_word(action.param2, meter);
            status |= user_field_meter_entry_set(rule.unit, rate, meter);
        } else if (action.type == 30) {
            const int32_t port = adp_intf_2_phy_id(word_of(action.param));
            if (uint8_t *param = param_of_status()) {
                put_word(param, static_cast<uint32_t>(port));
            }
            log_step("%s:[%05d] acl action user-port=[%d] ----> phy-port=[%d]\n", 1225, word_of(action.param), port);
        } else if (action.type == 33 && rule.submodule_type != 16) {
            const PortSet ports = translated(rule.unit, action.param);
            if (uint8_t *param = param_of_status()) {
                std::memcpy(param, ports.word.data(), sizeof ports.word);
            }
        }
    }

    void add_action(int32_t i) {
        FpAction &action = rule.actions[i];
        log_step("%s:[%05d]  ---------ret=[%d] fent=[%d] i=[%d] actionNum=[%d] type=[%d]-------\n", 1146, status, fent,
                 i, rule.action_num, action.type);
        prepare_action(action);
        log_step("%s:[%05d]  ---------ret=[%d] fent=[%d] type=[%d]-------\n", 1260, status, fent, action.type);
        status |= user_field_action_add(0, rule.unit, fent, action.type, action.param, action.param2);
        if (is_double) {
            status |= user_field_action_add(0, rule.unit, fent + 1, action.type, action.param, action.param2);
            log_step(kEntryLog, 1267, status, fent, fent + 1);
        }
    }

    void install() {
        log_step("%s:[%05d]  add action ret=[%d] \n", 1272, status);
        status |= user_field_entry_install(0, rule.unit, fent);
        log_step("%s:[%05d]  ---------ret=[%d] fent=[%d] fent=[%d]-------\n", 1276, status, fent, fent);
        if (is_double) {
            status |= user_field_entry_install(0, rule.unit, fent + 1);
            log_step(kEntryLog, 1280, status, fent, fent + 1);
        }
        log_step("%s:[%05d] install ret=[%d] entry=[%d] true_entry=[%d]\n", 1283, status, rule.entity_id, fent);
    }

    void record() const {
        auto *node = static_cast<FpListNode *>(std::calloc(1, sizeof(FpListNode)));
        if (node == nullptr) {
            printf("%s:[%05d] malloc failed!~\n", kInstall, 1295);
            return;
        }
        node->entity = rule;
        tables.rules.push_back(node);
    }
};

}  // namespace

adp_status_t adp_fp_add_entity_rule(FpEntity rule) {
    log_step("%s:[%05d]  =========================== begin to add fp entity rule ======================== \n", 907);
    const FpInfo *row = adp_fp_find_data_by_submodetype(rule.submodule_type);
    if (row == nullptr || row->group == 0) {
        return 101;
    }
    if (rule.qualify_num > 16 || rule.action_num > 8) {
        return -1;
    }
    Installation installation{rule, *row};
    installation.fent = reference::adp_fp_get_true_entity_id(*row, rule.entity_id);
    installation.rule.true_entry = installation.fent;
    installation.is_double = reference::adp_fp_is_double_entity(*row) != 0;
    log_step("%s:[%05d] install entry=[%d] true_entry=[%d]\n", 939, rule.entity_id, installation.fent);
    log_step("%s:[%05d] idDoubleEntry=[%d] \n", 945, installation.is_double);
    reference::adp_fp_delete_entity_rule_ex(installation.rule);
    installation.create();
    for (int32_t i = 0; i < rule.qualify_num; ++i) {
        installation.add_qualifier(i);
    }
    for (int32_t i = 0; i < rule.action_num; ++i) {
        installation.add_action(i);
    }
    installation.install();
    installation.record();
    return installation.status;
}

// Counters and the look-up miss action

int32_t adp_fp_get_statistics(int32_t counter_idx, int32_t type) {
    int32_t count = 0;
    user_field_get_statistics(0, 0, counter_idx, type, &count);
    log("%s:[%05d] counter_idx=[%d], type=[0x%x], count=[%d]\n", "adp_fp_get_statistics", 1311, counter_idx, type,
        count);
    return count;
}

adp_status_t adp_fp_clear_statistics(uint32_t /*unused1*/, uint32_t /*unused2*/, int32_t counter_idx, int32_t type) {
    const int32_t result = user_field_clear_statistics(0, 0, counter_idx, type);
    log("%s:[%05d] counter_idx=[%d], type=[0x%x]\n", "adp_fp_clear_statistics", 1335, counter_idx, type);
    return result;
}

adp_status_t adp_fp_lookupMissAct_set(int32_t intf, uint32_t miss_action) {
    const int32_t port = adp_intf_2_phy_id(static_cast<uint32_t>(intf));
    const int32_t result = user_field_lookupMissAct_set(0, 0, port, miss_action);
    log("%s:[%05d] unit=[%d] intfId=[%d] phyId=[%d], Missaction=[0x%x]\n", "adp_fp_lookupMissAct_set", 1349, 0, intf,
        port, miss_action);
    return result;
}

adp_status_t adp_fp_lookupMissAct_pbmp_set(FpPortBitmap ports, uint32_t miss_action) {
    adp_status_t result = 0;
    for (int32_t n = 0; n <= 26; ++n) {
        if ((ports.word[0] >> n & 1) != 0) {
            result = adp_fp_lookupMissAct_set(n, miss_action);
        }
    }
    return result;
}

// Remark rules

namespace {

struct Field {
    uint32_t type;
    const void *data;
    uint32_t length;
};

void append(FpEntity *entity, uint32_t type, const void *data, uint32_t length) {
    uint8_t ones[64];
    std::memset(ones, 0xFF, sizeof ones);
    reference::adp_fp_add_entity_qualify(entity, type, data, length, ones, static_cast<int32_t>(length));
}

/** Adds the field that the rule matches; false when there is none of that number. */
bool append_field(FpEntity *entity, const RemarkRule &rule) {
    const uint32_t types[] = {7, 6, 23, 22, 29, 10, 9, 30, 31, 332, 27, 28};
    if (rule.match_field >= 12) {
        return false;
    }
    if (rule.match_field <= 1) {
        append(entity, types[rule.match_field], rule.match_value, 6);
        return true;
    }
    uint32_t value = word_of(rule.match_value);
    if (rule.match_field == 8 || rule.match_field == 9) {
        const uint32_t ip_type = rule.match_field == 8 ? 5 : 10;
        append(entity, 61, &ip_type, 4);
        value *= 4;
    }
    append(entity, types[rule.match_field], &value, 4);
    return true;
}

}  // namespace

adp_status_t adp_add_remark_rule(RemarkRule *rule) {
    if (rule == nullptr) {
        return 101;
    }
    const uint64_t shifted = (uint64_t{rule->port_bitmap[0]} << 32 | rule->port_bitmap[1]) << 1;
    rule->port_bitmap[0] = static_cast<uint32_t>(shifted >> 32);
    rule->port_bitmap[1] = static_cast<uint32_t>(shifted);
    if (rule->rule_form != 7 && rule->rule_form != 1) {
        return 101;
    }
    bool is_good = rule->remark_kind == 1 || rule->remark_kind == 2;
    FpEntity entity{};
    entity.submodule_type = 1;
    entity.entity_id = rule->rule_id;
    entity.priority = rule->rule_id;
    PortSet ports;
    ports.word[0] = rule->port_bitmap[1];
    ports.word[1] = rule->port_bitmap[0];
    append(&entity, 13, ports.word.data(), 32);
    if (rule->rule_form == 1 && !append_field(&entity, *rule)) {
        is_good = false;
    }
    const uint32_t value = rule->remark_value;
    reference::adp_fp_add_entity_action(&entity, rule->remark_kind == 1 ? 11 : 1, &value, 4, nullptr, 0);
    if (reference::adp_fp_add_entity_rule(entity) < 0) {
        return 102;
    }
    return is_good ? 0 : 102;
}

adp_status_t adp_del_remark_rule(uint32_t rule_id) {
    return adp_fp_delete_entity_rule(1, rule_id & 0xFFFF, 0) < 0 ? 102 : 0;
}

}  // namespace reference
