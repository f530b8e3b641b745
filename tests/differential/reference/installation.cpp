// Rules are written to the chip.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/log.h"

namespace reference {
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

    /** Does @p step for the entry, and for the second one of a pair; both count. */
    template <typename Step>
    void each_entry(Step step) {
        status |= step(fent);
        if (is_double) {
            status |= step(fent + 1);
        }
    }

    void create() {
        const int32_t priority = static_cast<int32_t>(static_cast<uint32_t>(row.prio_base) + rule.priority);
        log_step("%s:[%05d] unit=[%d] fg=[%d] fent=[%d]------------\n", 954, rule.unit, row.group, fent);
        each_entry([&](uint32_t entry) { return user_field_entry_create_id(0, rule.unit, row.group, entry); });
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
        each_entry([&](uint32_t entry) {
            return user_field_action_add(0, rule.unit, entry, action.type, action.param, action.param2);
        });
        if (is_double) {
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

}  // namespace reference
