// Shared by the tests of the field processor: rule records, and calls made to both the library and the model,
// whose results, traces, printed texts and lists of rules are then compared.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "fp/testing/model_install.h"
#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"

namespace fp_test {

inline constexpr int32_t kFailures[] = {-1, 1, 3, 102, INT32_MIN};

/** Submodules of one row each: of the two double-wide groups, and of a single one. */
inline constexpr uint32_t kOfGroup1 = 3;
inline constexpr uint32_t kOfGroup5 = 38;
inline constexpr uint32_t kOfGroup3 = 22;

inline FpEntity make_rule(uint32_t submodule_type, uint32_t entity_id, uint32_t priority = 0) {
    FpEntity rule = {};
    rule.submodule_type = submodule_type;
    rule.entity_id = entity_id;
    rule.priority = priority;
    return rule;
}

inline void set_words(uint8_t *field, const std::vector<uint32_t> &words) {
    for (size_t i = 0; i < words.size(); ++i) {
        set_word(field + 4 * i, words[i]);
    }
}

/** A qualifier's field: addresses are bytes, most significant first; everything else is words. */
inline void set_condition(uint8_t *field, uint32_t type, const std::vector<uint32_t> &words) {
    constexpr uint32_t kLastAddress = ADP_FP_QUALIFY_DST_MAC;
    if (type > kLastAddress) {
        set_words(field, words);
        return;
    }
    for (size_t i = 0; i < 4 * words.size(); ++i) {
        field[i] = static_cast<uint8_t>(words[i / 4] >> (24 - 8 * (i % 4)));
    }
}

inline void add_qualifier(FpEntity *rule, uint32_t type, const std::vector<uint32_t> &data,
                          const std::vector<uint32_t> &mask) {
    FpQualify &q = rule->qualifies[rule->qualify_num++];
    q.type = type;
    set_condition(q.data, type, data);
    set_condition(q.mask, type, mask);
}

inline void add_action(FpEntity *rule, uint32_t type, const std::vector<uint32_t> &param = {},
                       const std::vector<uint32_t> &param2 = {}) {
    FpAction &a = rule->actions[rule->action_num++];
    a.type = type;
    set_words(a.param, param);
    set_words(a.param2, param2);
}

/** Every qualifier of these types, each with other data. */
inline FpEntity with_qualifiers(FpEntity rule, std::initializer_list<uint32_t> types) {
    for (const uint32_t type : types) {
        add_qualifier(&rule, type, {0x11223300 + type, 2}, {0xFFEEDD00 + type, 6});
    }
    return rule;
}

/** A record with a value in every byte, used or not, so that an overrun is found. */
inline FpEntity full_record(uint32_t submodule_type, uint32_t entity_id) {
    FpEntity rule = {};
    auto *bytes = reinterpret_cast<uint8_t *>(&rule);
    for (size_t i = 0; i < sizeof rule; i += sizeof(uint32_t)) {
        set_word(bytes + i, static_cast<uint32_t>(i) * 0x0507090B + 0x01020304);
    }
    rule.submodule_type = submodule_type;
    rule.unit = 0;
    rule.entity_id = entity_id;
    rule.priority = 5;
    rule.qualify_num = 0;
    rule.action_num = 0;
    return rule;
}

inline std::string bytes_of(const FpEntity &rule) {
    return {reinterpret_cast<const char *>(&rule), sizeof rule};
}

/** The trace without the lines of log and trace. */
inline Trace driver_calls(const Trace &trace) {
    Trace calls;
    for (const std::string &line : trace) {
        if (line.rfind("user_", 0) == 0) {
            calls.push_back(line);
        }
    }
    return calls;
}

/** The lines of log and trace alone. */
inline Trace log_calls(const Trace &trace) {
    Trace calls;
    for (const std::string &line : trace) {
        if (line.rfind("user_", 0) != 0) {
            calls.push_back(line);
        }
    }
    return calls;
}

/** A log line while tracing is off, and while it is on; @p text without the place, which the format writes. */
inline Trace logged(const std::string &function, int line, const std::string &format, const std::string &text,
                    bool is_traced = false) {
    const std::string place = function + text_of(":[%05d]", line);
    Trace lines = {"sys_trace_get()"};
    if (is_traced) {
        lines.push_back("sys_trace_add_log(prefix=\"" + function + "():" + std::to_string(line) + "\", message=\"" +
                        place + text + "\\n\")");
    }
    lines.push_back("Log_logging_func(level=7, module=18, word=\"ACL\", format=\"%s:[%05d]" + format +
                    "\\n\", text=\"" + place + text + "\\n\")");
    return lines;
}

inline Trace joined(std::initializer_list<Trace> parts) {
    Trace all;
    for (const Trace &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/** Shows only the first line that differs: traces are long. */
inline void expect_same(const Trace &trace, const Trace &expected) {
    const auto [line, expected_line] = std::mismatch(trace.begin(), trace.end(), expected.begin(), expected.end());
    EXPECT_EQ(line == trace.end() ? "the end" : *line, expected_line == expected.end() ? "the end" : *expected_line)
        << "in line " << line - trace.begin();
}

class FpTest : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        std::memcpy(submodules_before_, g_stFpInfo, sizeof g_stFpInfo);
        LibraryTest::SetUp();
    }
    /** A test may write to the table of submodules. */
    void TearDown() override {
        std::memcpy(g_stFpInfo, submodules_before_, sizeof g_stFpInfo);
        LibraryTest::TearDown();
    }

    /** Cleared tables, driver and model. */
    void start() {
        start_over();
        model_ = Model();
    }

    /** @name A call to library and model, which must agree in everything; returns the library's result. */
    /** @{ */
    int32_t install(const FpEntity &rule) {
        return both([&] { return adp_fp_add_entity_rule(rule); }, [&] { return model_.install(rule); });
    }
    int32_t remove(uint32_t submodule_type, uint32_t entity_id, uint32_t action_type = 0) {
        return both([&] { return adp_fp_delete_entity_rule(submodule_type, entity_id, action_type); },
                    [&] { return model_.remove(submodule_type, entity_id, action_type); });
    }
    int32_t remove_ex(const FpEntity &rule) {
        return both([&] { return adp_fp_delete_entity_rule_ex(rule); }, [&] { return model_.remove_ex(rule); });
    }
    int32_t both(const std::function<int32_t()> &library, const std::function<int32_t()> &model) {
        ::testing::internal::CaptureStdout();
        const int32_t status = library();
        last_printed_ = ::testing::internal::GetCapturedStdout();
        last_trace_ = driver().take();
        EXPECT_EQ(status, model());
        expect_same(last_trace_, model_.take());
        EXPECT_EQ(last_printed_, model_.take_printed());
        compare_lists();
        return status;
    }
    /** @} */

    void fail_call(size_t k, int32_t result) {
        driver().fail_call(k, result);
        model_.fail_call(k, result);
    }
    void fail_every(const std::string &name, int32_t result) {
        driver().fail_every(name, result);
        model_.fail_every(name, result);
    }
    void fail_nothing() {
        driver().fail_nothing();
        model_.fail_nothing();
    }
    /** Every log line goes to the trace as well. */
    void trace_on() { fail_every("sys_trace_get", 1); }

    /** Runs @p operation after @p prepare, once for each of its calls and each failure, with that call failing. */
    void fail_each_call(const std::function<void()> &prepare, const std::function<void()> &operation) {
        start();
        prepare();
        const size_t before = driver().count();
        operation();
        const size_t calls = driver().count() - before;
        ASSERT_GT(calls, 0u);
        for (size_t k = 0; k < calls; ++k) {
            for (const int32_t failure : kFailures) {
                SCOPED_TRACE("call " + std::to_string(k) + " gives " + std::to_string(failure));
                start();
                prepare();
                fail_call(k, failure);
                operation();
            }
        }
    }

    /** A node that the test puts into the list, without an installation. */
    static FpListNode *put(const FpEntity &rule) {
        auto *node = static_cast<FpListNode *>(calloc(1, sizeof(FpListNode)));
        node->entity = rule;
        node->link = {&acl_fp_list_head, acl_fp_list_head.prev};
        acl_fp_list_head.prev->next = &node->link;
        acl_fp_list_head.prev = &node->link;
        return node;
    }

    /** The trace and output of the last call. */
    [[nodiscard]] const Trace &last_trace() const { return last_trace_; }
    [[nodiscard]] Trace last_driver_calls() const { return driver_calls(last_trace_); }
    [[nodiscard]] const std::string &last_printed() const { return last_printed_; }
    /** The record at this place of the list. */
    static const FpEntity &recorded(size_t i) { return library_test::installed_rules().at(i)->entity; }

    Model &model() { return model_; }

  private:
    void compare_lists() {
        const std::vector<FpListNode *> nodes = library_test::installed_rules();
        ASSERT_EQ(nodes.size(), model_.list.size());
        const adp_list_link_t *before = &acl_fp_list_head;
        for (size_t i = 0; i < nodes.size(); ++i) {
            EXPECT_EQ(nodes[i]->link.prev, before);
            EXPECT_TRUE(bytes_of(nodes[i]->entity) == bytes_of(model_.list[i])) << "record " << i;
            before = &nodes[i]->link;
        }
        EXPECT_EQ(acl_fp_list_head.prev, before);
    }

    FpInfo submodules_before_[ADP_FP_SUBMODULES] = {};
    Model model_;
    Trace last_trace_;
    std::string last_printed_;
};

}  // namespace fp_test
