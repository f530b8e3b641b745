// Installation of a rule: one hardware entry, or the pair of a double-wide submodule.
#include "fp/install.h"

#include <netlink_api.h>

#include "core/messages.h"
#include "core/port_map.h"
#include "fp/entry.h"
#include "fp/qualifiers.h"
#include "fp/rules.h"

namespace adp {
namespace {

constexpr char kFunction[] = "adp_fp_add_entity_rule";
constexpr char kResultAndPair[] = "%s:[%05d]  ---------ret=[%d] fent=[%d] fent+1=[%d]-------\n";

constexpr Message kBegin{
    {kFunction, 907}, "%s:[%05d]  =========================== begin to add fp entity rule ======================== \n"};
constexpr Message kEntry{{kFunction, 939}, "%s:[%05d] install entry=[%d] true_entry=[%d]\n"};
constexpr Message kIsDouble{{kFunction, 945}, "%s:[%05d] idDoubleEntry=[%d] \n"};
constexpr Message kCreate{{kFunction, 954}, "%s:[%05d] unit=[%d] fg=[%d] fent=[%d]------------\n"};
constexpr Message kCreated{{kFunction, 960}, "%s:[%05d] create entry [%d] ret=[%d] ------------\n"};
constexpr Message kPaired{{kFunction, 969}, kResultAndPair};
constexpr Message kPrioritySet{{kFunction, 971}, "%s:[%05d] set entry [%d] priority=[%d] ret=[%d] ------------\n"};
constexpr Message kQualify{{kFunction, 995}, "%s:[%05d]  ---------i=[%d] type=[%d] ret=[%d]-------\n"};
constexpr Message kAct{{kFunction, 1146},
                       "%s:[%05d]  ---------ret=[%d] fent=[%d] i=[%d] actionNum=[%d] type=[%d]-------\n"};
constexpr Message kPort{{kFunction, 1225}, "%s:[%05d] acl action user-port=[%d] ----> phy-port=[%d]\n"};
constexpr Message kAddAction{{kFunction, 1260}, "%s:[%05d]  ---------ret=[%d] fent=[%d] type=[%d]-------\n"};
constexpr Message kActionAdded{{kFunction, 1267}, kResultAndPair};
constexpr Message kInstall{{kFunction, 1272}, "%s:[%05d]  add action ret=[%d] \n"};
constexpr Message kInstalled{{kFunction, 1276}, "%s:[%05d]  ---------ret=[%d] fent=[%d] fent=[%d]-------\n"};
constexpr Message kSecondInstalled{{kFunction, 1280}, kResultAndPair};
constexpr Message kDone{{kFunction, 1283}, "%s:[%05d] install ret=[%d] entry=[%d] true_entry=[%d]\n"};

constexpr Message kUnknownQualifier{{kFunction, 1135}, "%s:[%05d] set unknow qualify type = [%d]\n"};
constexpr Message kNoMemory{{kFunction, 1295}, "%s:[%05d] malloc failed!~\n"};

/** Its bitmaps hold physical ports already. */

class Installation {
  public:
    Installation(FpEntity &rule, const FpInfo &row) : rule_(rule), row_(row), is_double_(is_double(row)) {}

    adp_status_t run();

  private:
    void create();
    void set_priority();
    void add_qualifier(int32_t i);
    void add_action(int32_t i);
    void set_meter(FpAction &action);
    void translate_port(const FpAction &action);
    void translate_ports(const FpAction &action);
    uint8_t *param_of_status();
    void install();

    // Contract: some results replace the status, some are added to it. The caller sees which.
    void replace_status(int32_t result) { status_ = result; }
    void add_status(int32_t result) { status_ |= result; }

    uint32_t second() const { return entry_ + 1; }

    FpEntity &rule_;
    const FpInfo &row_;
    uint32_t entry_ = 0;
    int32_t status_ = 0;
    bool is_double_;
};

adp_status_t Installation::run() {
    entry_ = true_entry_of(row_, rule_.entity_id);
    rule_.true_entry = entry_;
    log_rule(kEntry, rule_.entity_id, entry_);
    log_rule(kIsDouble, is_double_ ? 1 : 0);
    remove_replaced_rule(rule_);
    create();
    set_priority();
    for (int32_t i = 0; i < rule_.qualify_num; ++i) {
        add_qualifier(i);
    }
    for (int32_t i = 0; i < rule_.action_num; ++i) {
        add_action(i);
    }
    install();
    return status_;
}

void Installation::create() {
    log_rule(kCreate, rule_.unit, row_.group, entry_);
    replace_status(user_field_entry_create_id(fp_handle, rule_.unit, row_.group, entry_));
    if (is_double_) {
        add_status(user_field_entry_create_id(fp_handle, rule_.unit, row_.group, second()));
    }
    log_rule(kCreated, entry_, status_);
}

void Installation::set_priority() {
    const auto priority = static_cast<int32_t>(static_cast<uint32_t>(row_.prio_base) + rule_.priority);
    add_status(user_field_entry_prio_set(fp_handle, rule_.unit, entry_, priority));
    if (is_double_) {
        user_field_entry_prio_set(fp_handle, rule_.unit, second(), priority);
        replace_status(user_field_set_double_entry(fp_handle, rule_.unit, entry_));
        log_rule(kPaired, status_, entry_, second());
    }
    log_rule(kPrioritySet, entry_, priority, status_);
}

void Installation::add_qualifier(int32_t i) {
    const FpQualify &condition = rule_.qualifies[i];
    const Qualifier *qualifier = find_qualifier(condition.type);
    uint32_t target = second();
    if (!belongs_on_second_half(row_, qualifier)) {
        target = entry_;
        replace_status(user_field_set_select_tempate_idx(fp_handle, rule_.unit, entry_, 0));
    }
    log_rule(kQualify, i, condition.type, status_);
    if (qualifier == nullptr) {
        print(kUnknownQualifier, static_cast<int32_t>(condition.type));
        return;
    }
    const int32_t result = apply_qualifier(*qualifier, condition, rule_.unit, target);
    if (qualifier->form == QualifierForm::kPorts) {
        add_status(result);
    } else {
        replace_status(result);
    }
    log_rule({{kFunction, qualifier->log_line}, qualifier->log_format}, i, status_, target);
}

void Installation::add_action(int32_t i) {
    FpAction &action = rule_.actions[i];
    log_rule(kAct, status_, entry_, i, rule_.action_num, action.type);
    switch (action.type) {
        case ADP_FP_ACTION_METER:
            set_meter(action);
            break;
        case ADP_FP_ACTION_PORT:
            translate_port(action);
            break;
        case ADP_FP_ACTION_PORTS:
            translate_ports(action);
            break;
        default:
            break;
    }
    log_rule(kAddAction, status_, entry_, action.type);
    add_status(user_field_action_add(fp_handle, rule_.unit, entry_, action.type, action.param, action.param2));
    if (is_double_) {
        add_status(user_field_action_add(fp_handle, rule_.unit, second(), action.type, action.param, action.param2));
        log_rule(kActionAdded, status_, entry_, second());
    }
}

void Installation::set_meter(FpAction &action) {
    const uint32_t asked = load_word(action.param);
    const uint32_t rate = asked != 0 ? asked : static_cast<uint32_t>(row_.meter_rate);
    const uint32_t meter = load_word(action.param2) + static_cast<uint32_t>(row_.meter_base);
    store_word(action.param2, meter);
    add_status(user_field_meter_entry_set(rule_.unit, rate, meter));
}

// Contract: a translation is written to the action whose number is the status: the first one while nothing failed.
uint8_t *Installation::param_of_status() {
    const auto number = static_cast<uint32_t>(status_);
    return number < ADP_FP_ACTIONS ? rule_.actions[number].param : nullptr;
}

void Installation::translate_port(const FpAction &action) {
    const int32_t port = number(phy_of(Intf(load_word(action.param))));
    if (uint8_t *param = param_of_status(); param != nullptr) {
        store_word(param, static_cast<uint32_t>(port));
    }
    log_rule(kPort, load_word(action.param), port);
}

void Installation::translate_ports(const FpAction &action) {
    if (rule_.submodule_type == ADP_FP_SUBMODULE_PHYSICAL) {
        return;
    }
    const adp_port_set_t ports = phy_ports_of(action.param, rule_.unit);
    if (uint8_t *param = param_of_status(); param != nullptr) {
        memcpy(param, &ports, sizeof ports);
    }
}

void Installation::install() {
    log_rule(kInstall, status_);
    add_status(user_field_entry_install(fp_handle, rule_.unit, entry_));
    log_rule(kInstalled, status_, entry_, entry_);
    if (is_double_) {
        add_status(user_field_entry_install(fp_handle, rule_.unit, second()));
        log_rule(kSecondInstalled, status_, entry_, second());
    }
    log_rule(kDone, status_, rule_.entity_id, entry_);
}

constexpr bool has_room_for(const FpEntity &rule) {
    return rule.qualify_num <= ADP_FP_QUALIFIERS && rule.action_num <= ADP_FP_ACTIONS;
}

}  // namespace

adp_status_t install_rule(FpEntity &rule) {
    log_rule(kBegin);
    const FpInfo *row = adp_fp_find_data_by_submodetype(rule.submodule_type);
    if (row == nullptr || row->group == 0) {
        return ADP_E_SELECTOR;
    }
    if (!has_room_for(rule)) {
        return ADP_FAIL;
    }
    const adp_status_t status = Installation(rule, *row).run();
    if (!record_rule(rule)) {
        print(kNoMemory);
    }
    return status;
}

}  // namespace adp

using namespace adp;

adp_status_t adp_fp_add_entity_rule(FpEntity entity) {
    return install_rule(entity);
}
