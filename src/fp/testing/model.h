// A model of the field processor's calls for the tests: it runs the steps one by one against the same scripted results
// and gives what must be called, logged, printed, returned and recorded. It uses nothing of the library.
#pragma once

#include <adp/fp.h>

#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calls/describe.h"
#include "fp/testing/tables.h"
#include "fp/testing/text.h"

namespace fp_test {

class Model {
  public:
    /** The default board: interface n is physical port n + 3, the CPU port is 0. Tests can change it. */
    Model() {
        for (int32_t intf = 1; intf <= ADP_USER_PORTS; ++intf) {
            ports[static_cast<uint32_t>(intf)] = intf + 3;
        }
        ports[0] = 0;
    }

    std::map<uint32_t, int32_t> ports;
    std::vector<FpEntity> list;
    bool is_out_of_memory = false;

    void fail_call(size_t k, int32_t result) { failing_call_ = {count_ + k, result}; }
    void fail_every(const std::string &name, int32_t result) { failing_[name] = result; }
    void fail_nothing() {
        failing_call_.reset();
        failing_.clear();
    }

    Trace take() { return std::exchange(trace_, {}); }
    std::string take_printed() { return std::exchange(printed_, {}); }

    int32_t install(FpEntity rule);
    int32_t remove(uint32_t submodule_type, uint32_t entity_id, uint32_t action_type) {
        return remove_rule(submodule_type, entity_id, action_type == 53 ? 1 : 0, "adp_fp_delete_entity_rule", 547, 567);
    }
    int32_t remove_ex(const FpEntity &rule) {
        int meters = 0;
        for (int32_t i = 0; i < std::min(rule.action_num, ADP_FP_ACTIONS); ++i) {
            meters += rule.actions[i].type == 53 ? 1 : 0;
        }
        return remove_rule(rule.submodule_type, rule.entity_id, meters, "adp_fp_delete_entity_rule_ex", 612, 636);
    }
    uint32_t true_entry(const Submodule &row, uint32_t entity_id);

    [[nodiscard]] int32_t phy(uint32_t intf) const {
        const auto found = ports.find(intf);
        return found == ports.end() ? -1 : found->second;
    }

    int32_t call(const std::string &line);
    template <typename... Values>
    void log(const char *function, int line, const char *format, Values... values);

  private:
    static constexpr char kInstall[] = "adp_fp_add_entity_rule";
    static constexpr char kPair[] = "%s:[%05d]  ---------ret=[%d] fent=[%d] fent+1=[%d]-------\n";

    int32_t remove_rule(uint32_t submodule_type, uint32_t entity_id, int meters, const char *function, int line,
                        int second_line);
    int32_t on_entry(const std::string &call_name, uint32_t unit, uint32_t entry, const std::string &rest = "") {
        return call("user_field_" + call_name + "(handle=0, unit=" + std::to_string(unit) +
                    ", entry=" + std::to_string(entry) + rest + ")");
    }
    int32_t destroy(uint32_t entry);
    void create();
    void prioritise();
    void qualify(int32_t i);
    std::string condition_text(const QualifierRow &row, const FpQualify &q) const;
    void act(int32_t i);
    void prepare(FpAction &a);
    void finish();
    int32_t add_action(uint32_t entry, const FpAction &a);
    [[nodiscard]] std::vector<uint32_t> phy_words(const uint8_t *bitmap) const;

    FpEntity rule_{};
    const Submodule *row_ = nullptr;
    uint32_t fent_ = 0;
    uint32_t s_ = 0;
    bool is_double_ = false;

    Trace trace_;
    std::string printed_;
    size_t count_ = 0;
    std::optional<std::pair<size_t, int32_t>> failing_call_;
    std::map<std::string, int32_t> failing_;
};

inline int32_t Model::call(const std::string &line) {
    trace_.push_back(line);
    const size_t number = count_++;
    if (failing_call_ && failing_call_->first == number) {
        return failing_call_->second;
    }
    const auto failing = failing_.find(line.substr(0, line.find('(')));
    return failing == failing_.end() ? 0 : failing->second;
}

template <typename... Values>
void Model::log(const char *function, int line, const char *format, Values... values) {
    const std::string text = text_of(format, function, line, static_cast<int32_t>(values)...);
    if (call("sys_trace_get()") != 0) {
        call("sys_trace_add_log(prefix=\"" + text_of("%s():%d", function, line) +
             "\", message=" + calls::quoted(text.c_str()) + ")");
    }
    call(calls::describe_log(7, 18, "ACL", format, text.c_str()));
}

inline uint32_t Model::true_entry(const Submodule &row, uint32_t entity_id) {
    const uint32_t n = static_cast<uint32_t>(row.prio_base) + entity_id;
    uint32_t entry = n;
    switch (row.group) {
        case 1:
            entry = 2 * n + 1280;
            break;
        case 2:
            entry = n + 896;
            break;
        case 3:
            entry = n + 768;
            break;
        case 4:
            entry = n + 640;
            break;
        case 5:
            entry = 2 * n + 1024;
            break;
        case 6:
            entry = n + 512;
            break;
        case 7:
            entry = n + 384;
            break;
        case 8:
            entry = n + 256;
            break;
        default:
            break;
    }
    log("adp_fp_get_true_entity_id", 864, "%s:[%05d] entry=[%d] group=[%d] prio_base=[%d] true_entry=[%d]-\n",
        entity_id, row.group, row.prio_base, entry);
    return entry;
}

inline int32_t Model::destroy(uint32_t entry) {
    int32_t result = on_entry("action_remove_all", 0, entry);
    result |= on_entry("qualify_clear", 0, entry);
    result |= on_entry("entry_destroy", 0, entry);
    return result;
}

inline int32_t Model::remove_rule(uint32_t submodule_type, uint32_t entity_id, int meters, const char *function,
                                  int line, int second_line) {
    const auto node = std::find_if(list.begin(), list.end(), [&](const FpEntity &rule) {
        return rule.submodule_type == submodule_type && rule.entity_id == entity_id;
    });
    if (node == list.end()) {
        return 0;
    }
    const uint32_t t = node->true_entry;
    int32_t result = 0;
    log(function, line, "%s:[%05d] del entry=[%d] true_entry=[%d]\n", entity_id, t);
    for (int i = 0; i < meters; ++i) {
        result |= on_entry("meter_destroy", 0, t);
    }
    result |= destroy(t);
    if (t >= 1024 && t <= 1535) {
        log(function, second_line, "%s:[%05d] del double entry=[%d] true_entry=[%d]\n", entity_id, t + 1);
        result |= destroy(t + 1);
    }
    list.erase(node);
    return result;
}

}  // namespace fp_test
