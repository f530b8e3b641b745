// Runs of a row.
#include "tests/fault_injection/run.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "calls/exported.h"
#include "tests/fault_injection/plan_reader.h"
#include "tests/fault_injection/target.h"
#include "tests/support/call_line.h"
#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"
#include "tools/adpsh/arguments.h"

namespace fault_injection {
namespace {

/** What a call only writes holds this before it, so that what it left alone shows. */
constexpr uint8_t kUntouched = 0xA5;

/** A call's arguments as a line gives them. */
class Subject {
  public:
    explicit Subject(const std::string &line)
        : command_(call_line::parsed(line)),
          call_(call_line::require_call(command_.name)),
          arguments_(call_, command_, variables_) {
        arguments_.fill_outputs(kUntouched);
    }

    int64_t invoke() { return call_.result == calls::Result::kStruct ? found() : arguments_.invoke(); }

    [[nodiscard]] std::vector<std::string> outputs() const {
        std::vector<std::string> bytes;
        for (const adpsh::Slot &slot : arguments_.slots()) {
            if (slot.pointed != nullptr) {
                bytes.emplace_back(slot.pointed->begin(), slot.pointed->end());
            }
            if (slot.parameter->shape == calls::Shape::kFrameRecord) {
                add_numbers(slot, bytes);
            } else if (slot.parameter->is_written() && slot.parameter->shape != calls::Shape::kOutPointer) {
                bytes.emplace_back(slot.storage.begin(), slot.storage.end());
            }
        }
        return bytes;
    }

    /** Writes into a parameter, or the frame that one addresses, and tells whether there is one of that name. */
    bool assign(const Assignment &assignment) {
        const Target target = target_of(assignment.target);
        for (const adpsh::Slot &slot : arguments_.slots()) {
            if (slot.pointed != nullptr && target.name == "frame") {
                auto &frame = const_cast<adpsh::Bytes &>(*slot.pointed);
                store(target, {calls::Kind::kU8, 1}, frame.size(), frame.data(), assignment.value);
                return true;
            }
            if (target.name == slot.parameter->name) {
                auto &storage = const_cast<adpsh::Bytes &>(slot.storage);
                store(target, slot.parameter->element, slot.elements, storage.data(), assignment.value);
                return true;
            }
        }
        return false;
    }

  private:
    int64_t found() { return arguments_.invoke() == 0 ? 0 : 1; }

    /** The numbers of a record: its addresses differ from run to run, and the frame itself is compared. */
    static void add_numbers(const adpsh::Slot &slot, std::vector<std::string> &bytes) {
        for (const calls::Field &field : slot.parameter->element.layout->fields) {
            if (!field.is_pointer && !slot.is_null) {
                const auto from = slot.storage.begin() + static_cast<ptrdiff_t>(field.offset);
                bytes.emplace_back(from, from + static_cast<ptrdiff_t>(field.element.size * field.count));
            }
        }
    }

    adpsh::Variables variables_;
    adpsh::Command command_;
    const exported::Call &call_;
    adpsh::Arguments arguments_;
};

std::vector<std::string> installed() {
    std::vector<std::string> rules;
    for (const FpListNode *node : library_test::installed_rules()) {
        rules.push_back(std::to_string(node->entity.submodule_type) + "/" + std::to_string(node->entity.entity_id) +
                        "@" + std::to_string(node->entity.true_entry));
    }
    return rules;
}

Memory memory_of(const Subject &subject) {
    Memory memory;
    memory.rules = installed();
    library_test::drop_rules();
    memory.tables = library_test::table_bytes();
    memory.outputs = subject.outputs();
    return memory;
}

/** The clause `before`: calls and assignments that make what the function finds. */
void prepare(const Row &row, const State &state) {
    for (const std::string &piece : split(in_state(row.clause("before"), state), ';')) {
        if (exported::find_call(piece.substr(0, piece.find(' '))) != nullptr) {
            Subject(piece).invoke();
        } else {
            for (const Assignment &assignment : assignments_of(piece)) {
                assign_table(assignment);
            }
        }
    }
    recording::driver().reset();
}

void fail_every_call(int32_t value) {
    for (const calls::Call &call : calls::calls()) {
        recording::driver().fail_every(call.name, failing_result(call.name, value));
    }
}

void arm(const Failure &failure, fake_system::System &system) {
    switch (failure.what) {
        case Failure::What::kNothing:
            return;
        case Failure::What::kDriver:
            return failure.writes ? recording::driver().fail_call_after_writing(failure.index, failure.value)
                                  : recording::driver().fail_call(failure.index, failure.value);
        case Failure::What::kEveryDriverCall:
            return fail_every_call(failure.value);
        case Failure::What::kAllocation:
            return system.fail_allocation(failure.index);
        case Failure::What::kSystem:
            return system.fail_call(failure.name, failure.index, failure.value);
    }
}

/** Makes the call under the fake system; what the library allocates is freed only when the run has been looked at. */
void observe(Subject &subject, const Failure &failure, fake_system::System &system, Observed &observed) {
    const auto held = [&system] { return static_cast<int64_t>(system.outstanding_allocations()); };
    const auto open = [&system] { return static_cast<int64_t>(system.open_descriptors()); };
    const size_t allocations = system.allocations();
    const int64_t held_before = held();
    const int64_t open_before = open();
    system.on_call([](const std::string &line) { recording::driver().note(line); });
    arm(failure, system);
    observed.status = subject.invoke();
    observed.trace = recording::driver().take();
    observed.allocations = system.allocations() - allocations;
    observed.kept_memory = held() - held_before;
    observed.open_descriptors = open() - open_before;
}

}  // namespace

int32_t failing_result(const std::string &call, int32_t value) {
    // A positive result is this call's success.
    return call == "equeue_send_ucast" ? std::min(value, 0) : value;
}

Observed run(const Row &row, const State &state, const Failure &failure) {
    bring_up(state);
    Observed observed;
    fake_system::Session session;
    prepare(row, state);
    give(in_state(row.clause("given"), state));
    Subject subject(in_state(row.call, state));
    void *const ports = intf_to_phy_port;
    void *const trunks = intf_map_trunk;
    observe(subject, failure, session.system(), observed);
    // A call that makes a new map leaves the old one to the caller.
    std::free(ports != intf_to_phy_port ? ports : nullptr);
    std::free(trunks != intf_map_trunk ? trunks : nullptr);
    observed.memory = memory_of(subject);
    take_down();
    return observed;
}

Memory memory_with(const Row &row, const State &state, const std::vector<Assignment> &writes) {
    bring_up(state);
    const fake_system::Session session;
    prepare(row, state);
    Subject subject(in_state(row.call, state));
    for (const Assignment &write : writes) {
        if (!subject.assign(write)) {
            assign_table(write);
        }
    }
    Memory memory = memory_of(subject);
    take_down();
    return memory;
}

}  // namespace fault_injection
