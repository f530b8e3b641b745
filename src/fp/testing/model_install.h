// The model's installation of a rule: the steps of Model::install().
#pragma once

#include <cstring>

#include "fp/testing/model.h"

namespace fp_test {

inline int32_t Model::install(FpEntity rule) {
    log(kInstall, 907,
        "%s:[%05d]  =========================== begin to add fp entity rule ======================== \n");
    row_ = submodule(rule.submodule_type);
    if (row_ == nullptr) {
        return 101;
    }
    if (rule.qualify_num > 16 || rule.action_num > 8) {
        return -1;
    }
    fent_ = true_entry(*row_, rule.entity_id);
    rule.true_entry = fent_;
    is_double_ = row_->group == 1 || row_->group == 5;
    log(kInstall, 939, "%s:[%05d] install entry=[%d] true_entry=[%d]\n", rule.entity_id, fent_);
    log(kInstall, 945, "%s:[%05d] idDoubleEntry=[%d] \n", is_double_);
    remove_ex(rule);
    rule_ = rule;
    create();
    prioritise();
    for (int32_t i = 0; i < rule_.qualify_num; ++i) {
        qualify(i);
    }
    for (int32_t i = 0; i < rule_.action_num; ++i) {
        act(i);
    }
    finish();
    if (is_out_of_memory) {
        printed_ += text_of("%s:[%05d] malloc failed!~\n", kInstall, 1295);
    } else {
        list.push_back(rule_);
    }
    return static_cast<int32_t>(s_);
}

inline void Model::create() {
    const auto create_id = [&](uint32_t entry) {
        return static_cast<uint32_t>(call("user_field_entry_create_id(handle=0, unit=" + std::to_string(rule_.unit) +
                                          ", group=" + std::to_string(row_->group) +
                                          ", entry=" + std::to_string(entry) + ")"));
    };
    log(kInstall, 954, "%s:[%05d] unit=[%d] fg=[%d] fent=[%d]------------\n", rule_.unit, row_->group, fent_);
    s_ = create_id(fent_);
    if (is_double_) {
        s_ |= create_id(fent_ + 1);
    }
    log(kInstall, 960, "%s:[%05d] create entry [%d] ret=[%d] ------------\n", fent_, s_);
}

inline void Model::prioritise() {
    const auto p = static_cast<int32_t>(static_cast<uint32_t>(row_->prio_base) + rule_.priority);
    const std::string rest = ", priority=" + std::to_string(p);
    s_ |= static_cast<uint32_t>(on_entry("entry_prio_set", rule_.unit, fent_, rest));
    if (is_double_) {
        on_entry("entry_prio_set", rule_.unit, fent_ + 1, rest);
        s_ = static_cast<uint32_t>(on_entry("set_double_entry", rule_.unit, fent_));
        log(kInstall, 969, kPair, s_, fent_, fent_ + 1);
    }
    log(kInstall, 971, "%s:[%05d] set entry [%d] priority=[%d] ret=[%d] ------------\n", fent_, p, s_);
}

inline void Model::qualify(int32_t i) {
    const FpQualify &q = rule_.qualifies[i];
    uint32_t target = fent_ + 1;
    if (!is_on_second_half(row_->group, q.type)) {
        target = fent_;
        s_ = static_cast<uint32_t>(on_entry("set_select_tempate_idx", rule_.unit, fent_, ", index=0"));
    }
    log(kInstall, 995, "%s:[%05d]  ---------i=[%d] type=[%d] ret=[%d]-------\n", i, q.type, s_);
    for (const QualifierRow &row : kQualifiers) {
        if (row.type == q.type) {
            const std::string name = std::string(row.call).substr(std::strlen("user_field_"));
            const auto result = static_cast<uint32_t>(on_entry(name, rule_.unit, target, condition_text(row, q)));
            s_ = q.type == 13 ? s_ | result : result;
            log(kInstall, row.line, row.message, i, s_, target);
            return;
        }
    }
    printed_ += text_of("%s:[%05d] set unknow qualify type = [%d]\n", kInstall, 1135, static_cast<int32_t>(q.type));
}

inline std::vector<uint32_t> Model::phy_words(const uint8_t *bitmap) const {
    std::vector<uint32_t> words(8);
    for (uint32_t n = 0; n < 256 && rule_.unit == 0; ++n) {
        const int32_t port = phy(n);
        if ((word_of(bitmap + n / 32 * 4) >> n % 32 & 1) != 0 && port >= 0 && port < 256) {
            words[static_cast<uint32_t>(port) / 32] |= 1u << port % 32;
        }
    }
    return words;
}

inline std::string Model::condition_text(const QualifierRow &row, const FpQualify &q) const {
    const auto numbers = [&](uint32_t cut) {
        return ", data=" + std::to_string(word_of(q.data) & cut) + ", mask=" + std::to_string(word_of(q.mask) & cut);
    };
    switch (row.takes) {
        case Takes::kBytes:
            return ", data=" + block_text(q.data, sizeof q.data) + ", mask=" + block_text(q.mask, sizeof q.mask);
        case Takes::kPorts:
            return ", data=" + ports_text(phy_words(q.data)) + ", mask=" + ports_text(phy_words(q.mask));
        case Takes::kLow16:
            return numbers(0xFFFF);
        case Takes::kLow8:
            return numbers(0xFF);
        case Takes::kWordAlone:
            return ", data=" + std::to_string(word_of(q.data));
        case Takes::kWord:
            break;
    }
    return numbers(0xFFFFFFFF);
}

inline int32_t Model::add_action(uint32_t entry, const FpAction &a) {
    return on_entry(
        "action_add", rule_.unit, entry,
        ", type=" + std::to_string(a.type) + ", param=" + param_text(a.param) + ", param2=" + param_text(a.param2));
}

inline void Model::prepare(FpAction &a) {
    if (a.type == 53) {
        const uint32_t rate = word_of(a.param) != 0 ? word_of(a.param) : static_cast<uint32_t>(row_->meter_rate);
        set_word(a.param2, word_of(a.param2) + static_cast<uint32_t>(row_->meter_base));
        s_ |= static_cast<uint32_t>(call("user_field_meter_entry_set(unit=" + std::to_string(rule_.unit) + ", rate=" +
                                         std::to_string(rate) + ", meter=" + std::to_string(word_of(a.param2)) + ")"));
    } else if (a.type == 30) {
        const int32_t port = phy(word_of(a.param));
        if (s_ <= 7) {
            set_word(rule_.actions[s_].param, static_cast<uint32_t>(port));
        }
        log(kInstall, 1225, "%s:[%05d] acl action user-port=[%d] ----> phy-port=[%d]\n", word_of(a.param), port);
    } else if (a.type == 33 && rule_.submodule_type != 16) {
        const std::vector<uint32_t> words = phy_words(a.param);
        for (uint32_t i = 0; i < words.size() && s_ <= 7; ++i) {
            set_word(rule_.actions[s_].param + 4 * i, words[i]);
        }
    }
}

inline void Model::act(int32_t i) {
    FpAction &a = rule_.actions[i];
    log(kInstall, 1146, "%s:[%05d]  ---------ret=[%d] fent=[%d] i=[%d] actionNum=[%d] type=[%d]-------\n", s_, fent_, i,
        rule_.action_num, a.type);
    prepare(a);
    log(kInstall, 1260, "%s:[%05d]  ---------ret=[%d] fent=[%d] type=[%d]-------\n", s_, fent_, a.type);
    s_ |= static_cast<uint32_t>(add_action(fent_, a));
    if (is_double_) {
        s_ |= static_cast<uint32_t>(add_action(fent_ + 1, a));
        log(kInstall, 1267, kPair, s_, fent_, fent_ + 1);
    }
}

inline void Model::finish() {
    log(kInstall, 1272, "%s:[%05d]  add action ret=[%d] \n", s_);
    s_ |= static_cast<uint32_t>(on_entry("entry_install", rule_.unit, fent_));
    log(kInstall, 1276, "%s:[%05d]  ---------ret=[%d] fent=[%d] fent=[%d]-------\n", s_, fent_, fent_);
    if (is_double_) {
        s_ |= static_cast<uint32_t>(on_entry("entry_install", rule_.unit, fent_ + 1));
        log(kInstall, 1280, kPair, s_, fent_, fent_ + 1);
    }
    log(kInstall, 1283, "%s:[%05d] install ret=[%d] entry=[%d] true_entry=[%d]\n", s_, rule_.entity_id, fent_);
}

}  // namespace fp_test
