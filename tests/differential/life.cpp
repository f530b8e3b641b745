#include "tests/differential/life.h"

#include <adp/adp.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>

#include "calls/exported.h"
#include "tests/differential/arguments.h"
#include "tests/differential/call_text.h"
#include "tests/differential/chip.h"
#include "tests/differential/random.h"
#include "tests/differential/reference_table.h"
#include "tests/differential/table_compare.h"
#include "tests/support/fake_system.h"
#include "tests/support/trace_file.h"
#include "tests/support/trace_text.h"

namespace lives {
namespace {

int32_t answer_event(const exported::Callback &callback, const void *const *arguments) {
    std::string text = callback.name;
    for (size_t index = 0; index < callback.params.size(); ++index) {
        const calls::Param &parameter = callback.params[index];
        const void *from = calls::target(parameter, arguments[index]);
        text += " " + trace_text::words(from, parameter.extent * parameter.element.size);
    }
    return chip().answer_event(text);
}

/** How often a call is made, compared with the others. */
uint32_t weight_of(std::string_view name) {
    static const std::map<std::string_view, uint32_t> weights = {{"adp_set_max_phy_port_num", 1},
                                                                 {"adp_add_phy_port", 6},
                                                                 {"adp_modules_init", 1},
                                                                 {"adp_fp_init", 1},
                                                                 {"adp_delete_dscp_map", 2},
                                                                 {"adp_create_dscp_map", 2},
                                                                 {"adp_get_dscp_map", 2},
                                                                 {"l2_user_entry_init", 2},
                                                                 {"l2_user_entry_add_all_bpdu", 2},
                                                                 {"adp_set_phy_port_attr", 40},
                                                                 {"adp_get_phy_port_attr", 30},
                                                                 {"adp_create_agg_group", 8},
                                                                 {"adp_delete_agg_group", 4},
                                                                 {"adp_add_agg_member", 24},
                                                                 {"adp_add_agg_member_by_map", 16},
                                                                 {"adp_del_agg_member", 12},
                                                                 {"adp_del_agg_member_by_map", 8},
                                                                 {"adp_add_agg_standby_member", 12},
                                                                 {"adp_del_agg_standby_member", 10},
                                                                 {"adp_agg_linkscan_handle", 24},
                                                                 {"SET_AGG_MANAGE_INTF", 6},
                                                                 {"adp_fp_add_entity_rule", 24},
                                                                 {"adp_fp_delete_entity_rule", 10},
                                                                 {"adp_fp_delete_entity_rule_ex", 8},
                                                                 {"adp_add_remark_rule", 12},
                                                                 {"adp_add_msti_member", 16},
                                                                 {"adp_del_msti_member", 8},
                                                                 {"adp_get_stg_vlan_list", 8},
                                                                 {"__adp_transmit_frame", 24},
                                                                 {"__adp_receive_frame", 24},
                                                                 {"adp_transmit_frame", 10},
                                                                 {"adp_pkt_init", 2},
                                                                 {"adp_dump_packet", 2}};
    constexpr uint32_t kUsual = 4;
    const auto found = weights.find(name);
    return found == weights.end() ? kUsual : found->second;
}

size_t index_of(std::string_view name) {
    const auto calls = exported::calls();
    const auto found = std::find_if(calls.begin(), calls.end(), [&](const auto &call) { return call.name == name; });
    if (found == calls.end()) {
        std::fprintf(stderr, "lives: there is no call named %s\n", std::string(name).c_str());
        std::exit(2);
    }
    return static_cast<size_t>(found - calls.begin());
}

/** Every call as often as its weight says. */
const std::vector<size_t> &urn() {
    static const std::vector<size_t> balls = [] {
        std::vector<size_t> all;
        for (size_t index = 0; index < exported::calls().size(); ++index) {
            all.insert(all.end(), weight_of(exported::calls()[index].name), index);
        }
        return all;
    }();
    return balls;
}

/** The default board's map, with this number of user ports. */
void add_map(std::vector<Step> &life, uint32_t ports) {
    constexpr uint32_t kPortOffset = 3;
    constexpr uint64_t kWillingSeed = 1;
    life.push_back({index_of("adp_set_max_phy_port_num"), kWillingSeed, {ports}});
    life.push_back({index_of("adp_add_cpu_port"), kWillingSeed, {0, 0, 0, 0, 0}});
    for (uint32_t port = 1; port <= ports; ++port) {
        life.push_back({index_of("adp_add_phy_port"), kWillingSeed, {port, 0, 0, port + kPortOffset, 0}});
    }
}

}  // namespace

std::vector<Step> make_life(uint64_t seed, size_t calls) {
    constexpr uint32_t kBoardPorts = 26;
    constexpr uint32_t kKinds = 8;
    constexpr uint32_t kLargest = 34;
    Random random(seed);
    std::vector<Step> life;
    const uint32_t kind = random.below(kKinds);
    if (kind != 0) {
        add_map(life, kind == 1 ? random.below(kLargest) : kBoardPorts);
    }
    while (life.size() < calls) {
        const size_t call = urn()[random.below(static_cast<uint32_t>(urn().size()))];
        const uint64_t high = random.next();
        life.push_back({call, high << 32 | random.next(), {}});
    }
    life.resize(calls);
    return life;
}

namespace {

std::string_view falsified;

}  // namespace

void falsify(const char *call) {
    falsified = call;
}

const char *name_of(const Step &step) {
    return exported::calls()[step.call].name;
}

namespace {

/** A standard stream's text, in memory. */
class Capture {
  public:
    explicit Capture(std::FILE **stream) : stream_(stream), was_(*stream) { *stream = open_memstream(&text_, &size_); }
    ~Capture() {
        std::fclose(*stream_);
        *stream_ = was_;
        std::free(text_);
    }
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;

    std::string take() {
        std::fflush(*stream_);
        if (size_ == 0) {
            return "";
        }
        std::string text(text_, size_);
        std::rewind(*stream_);
        return text;
    }

  private:
    std::FILE **stream_;
    std::FILE *was_;
    char *text_ = nullptr;
    size_t size_ = 0;
};

/** Texts are equal; a mark in the model's stands for any number. */
bool is_same_text(std::string_view library, std::string_view model) {
    constexpr char kMark = '\x01';
    size_t at = 0;
    for (const char expected : model) {
        if (expected != kMark) {
            if (at >= library.size() || library[at++] != expected) {
                return false;
            }
            continue;
        }
        const size_t start = at;
        while (at < library.size() && library[at] >= '0' && library[at] <= '9') {
            ++at;
        }
        if (at == start) {
            return false;
        }
    }
    return at == library.size();
}

/** Everything that one side did in a step. */
struct Deed {
    int64_t result = 0;
    std::string out;
    std::string err;
    std::vector<uint8_t> notes;
    std::vector<std::string> lines;
};

/** What goes wrong in the system during a step. */
void set_system_mood(fake_system::System &system, uint64_t seed, uint32_t number) {
    constexpr uint32_t kMoods = 24;
    constexpr time_t kStepSeconds = 10;
    Random random(seed ^ 0x5957);
    system.set_time(static_cast<time_t>(number) * kStepSeconds);
    switch (random.below(kMoods)) {
        case 0:
            system.fail_allocation(random.below(2));
            break;
        case 1:
            system.fail("socket", random.one_in(2) ? EPERM : ENOBUFS);
            break;
        case 2:
            system.fail("ioctl", ENODEV);
            break;
        case 3:
            system.fail("sendto", ENETDOWN);
            break;
        case 4:
            system.remove_interface("eth0");
            break;
        case 5:
            system.send_only(random.below(40));
            break;
        default:
            break;
    }
}

void clear_system_mood(fake_system::System &system) {
    constexpr size_t kNever = 1000000000;
    constexpr int kInterfaceIndex = 7;
    for (const char *call : {"socket", "ioctl", "sendto"}) {
        system.fail(call, 0);
    }
    system.set_interface("eth0", kInterfaceIndex);
    system.fail_allocation(kNever);
}

void note_system_call(const fake_system::System &system, const std::string &line) {
    chip().note(line);
    if (line.rfind("sendto", 0) == 0 && !system.sent().empty()) {
        const fake_system::SentFrame &frame = system.sent().back();
        std::string text = "  to " + std::to_string(frame.family) + " " + std::to_string(frame.protocol) + " " +
                           std::to_string(frame.interface_index) + " " + std::to_string(frame.address_length) + " " +
                           std::to_string(frame.hardware_type) + " " + std::to_string(frame.packet_type) + " " +
                           std::to_string(frame.hardware_length) + ":";
        constexpr char kDigits[] = "0123456789abcdef";
        const auto append = [&](const std::vector<uint8_t> &bytes) {
            text += ' ';
            for (const uint8_t byte : bytes) {
                text += kDigits[byte >> 4];
                text += kDigits[byte & 15];
            }
        };
        append(frame.hardware_address);
        append(frame.bytes);
        chip().note(text);
    }
}

}  // namespace

struct Life::State {
    explicit State(std::FILE *to) : trace(to) {
        for (fake_system::System *system : {&library_system, &model_system}) {
            system->on_call([system](const std::string &line) { note_system_call(*system, line); });
            clear_system_mood(*system);
        }
    }

    template <typename Invoke>
    Deed run(fake_system::System &system, const Step &step, Invoke invoke) {
        Deed deed;
        chip().start(step.seed);
        if (step.values.empty()) {
            set_system_mood(system, step.seed, number);
        }
        fake_system::active = &system;
        deed.result = invoke();
        fake_system::active = nullptr;
        clear_system_mood(system);
        deed.notes = chip().notes();
        deed.lines = chip().lines();
        deed.out = out.take();
        deed.err = err.take();
        return deed;
    }

    [[nodiscard]] std::string compare(const Arguments &library_arguments, const Arguments &model_arguments,
                                      const Deed &library, const Deed &model) const;
    void write_trace(const std::string &line, const Arguments &arguments, const Deed &deed) const;

    std::FILE *trace;
    Capture out{&stdout};
    Capture err{&stderr};
    fake_system::System library_system;
    fake_system::System model_system;
    uint32_t number = 0;
    bool describes = false;
    uint64_t imported_calls = 0;
    std::vector<std::string> lines;
    Difference difference;
};

namespace {

std::string result_text(const exported::Call &call, int64_t result) {
    return call.result == calls::Result::kStruct && result != 0 ? "an address" : std::to_string(result);
}

/** Addresses lead to records: these are compared, of a list node the rule. */
bool is_same_result(const exported::Call &call, int64_t library, int64_t model) {
    if (call.result != calls::Result::kStruct) {
        return library == model;
    }
    if (library == 0 || model == 0) {
        return library == model;
    }
    if (std::string_view(call.layout->name) == "FpListNode") {
        const auto entity = [](int64_t node) {
            return &static_cast<const FpListNode *>(calls::address_of(node))->entity;
        };
        return std::memcmp(entity(library), entity(model), sizeof(FpEntity)) == 0;
    }
    return std::memcmp(calls::address_of(library), calls::address_of(model), call.layout->size) == 0;
}

}  // namespace

std::string Life::State::compare(const Arguments &library_arguments, const Arguments &model_arguments,
                                 const Deed &library, const Deed &model) const {
    if (library.notes != model.notes) {
        return "the calls that were made";
    }
    if (!is_same_result(library_arguments.call(), library.result, model.result)) {
        const exported::Call &call = library_arguments.call();
        return "the result: library " + result_text(call, library.result) + ", model " +
               result_text(call, model.result);
    }
    if (const char *name = library_arguments.difference(model_arguments)) {
        return "'" + std::string(name) + "' after the call: library" + outputs_text(library_arguments) + ", model" +
               outputs_text(model_arguments);
    }
    if (!is_same_text(library.out, model.out) || !is_same_text(library.err, model.err)) {
        return "the printed text: library \"" + library.out + library.err + "\", model \"" + model.out + model.err +
               "\"";
    }
    if (library_system.outstanding_allocations() != model_system.outstanding_allocations() ||
        library_system.open_descriptors() != model_system.open_descriptors()) {
        return "what is held: library " + std::to_string(library_system.outstanding_allocations()) +
               " allocations and " + std::to_string(library_system.open_descriptors()) + " descriptors, model " +
               std::to_string(model_system.outstanding_allocations()) + " and " +
               std::to_string(model_system.open_descriptors());
    }
    return table_difference();
}

void Life::State::write_trace(const std::string &line, const Arguments &arguments, const Deed &deed) const {
    std::fprintf(trace, "%s\n", line.c_str());
    for (const std::string &each : deed.lines) {
        std::fprintf(trace, "    %s\n", trace_file::portable(each).c_str());
    }
    const bool is_address = arguments.call().result == calls::Result::kStruct;
    const std::string result =
        is_address ? (deed.result != 0 ? "an address" : "null") : std::to_string(static_cast<int32_t>(deed.result));
    std::fprintf(trace, "= %s%s\n", result.c_str(), outputs_text(arguments).c_str());
    for (const std::string &text : {deed.out, deed.err}) {
        if (!text.empty()) {
            std::fprintf(trace, "> %s\n", text.c_str());
        }
    }
}

Life::Life(std::FILE *trace) : state_(new State(trace)) {
    exported::receive_events(answer_event);
}

Life::~Life() {
    delete state_;
}

void Life::describe() {
    state_->describes = true;
}

const std::vector<std::string> &Life::lines() const {
    return state_->lines;
}

uint64_t Life::imported_calls() const {
    return state_->imported_calls;
}

const Difference &Life::difference() const {
    return state_->difference;
}

bool Life::live(const Step &step) {
    const exported::Call &call = exported::calls()[step.call];
    const Model &reference = models()[step.call];
    const bool in_words = state_->describes || state_->trace != nullptr;
    const Arguments library_arguments(call, step.seed, step.values);
    const Arguments model_arguments(call, step.seed, step.values);
    const std::string line = in_words ? trace_line(library_arguments) : "";
    chip().describe(in_words);
    ++state_->number;
    const Deed model = state_->run(state_->model_system, step, [&] {
        return exported::invoke(call, reference.function, model_arguments.pointers());
    });
    Deed library = state_->run(state_->library_system, step,
                               [&] { return exported::invoke(call, call.function, library_arguments.pointers()); });
    state_->imported_calls += chip().count();
    if (falsified == call.name) {
        library.result ^= 1;
    }
    state_->lines = library.lines;
    if (state_->trace != nullptr) {
        state_->write_trace(line, library_arguments, library);
    }
    const std::string what = state_->compare(library_arguments, model_arguments, library, model);
    if (what.empty()) {
        return true;
    }
    state_->difference = {what, library.lines, model.lines};
    return false;
}

std::string Life::script(const Step &step) {
    return script_line(Arguments(exported::calls()[step.call], step.seed, step.values));
}

}  // namespace lives
