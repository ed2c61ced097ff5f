// rk slots: what the standard function table holds.
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Command.h"
#include "CommandLine.h"
#include "Failure.h"
#include "Library.h"
#include "OutputFile.h"
#include "RK/indep/frame/RK_OverFuncs.h"

namespace {

struct Slot {
    int32_t number;
    RK_SlotInfo info;
};

std::vector<Slot> Slots() {
    std::vector<Slot> slots;
    for (int32_t number = 0; number < RK_kSlotCount; ++number) {
        RK_SlotInfo info = {};
        CheckResult(RK_GetSlotInfo(number, &info), fmt::format("slot {}", number));
        slots.push_back({number, info});
    }
    return slots;
}

const char* FormName(RK_SlotForm form) {
    switch (form) {
        case RK_kSlotDefault: return "default";
        case RK_kSlotSSE2: return "SSE2";
        case RK_kSlotSSSE3: return "SSSE3";
        case RK_kSlotOverride: return "override";
        case RK_kSlotEmpty: break;
    }
    return "empty";
}

std::string FormsOf(const RK_SlotInfo& info) {
    if (info.name[0] == '\0') return "";
    std::string forms = "default";
    if (info.has_sse2_form) forms += ", SSE2";
    if (info.has_ssse3_form) forms += ", SSSE3";
    return forms;
}

// A run of slots without a function is one line.
std::string Table() {
    std::string text = fmt::format("{:>8}  {:<28} {:<9} {}\n", "slot", "function", "picked", "forms");
    const std::vector<Slot> slots = Slots();
    for (size_t i = 0; i < slots.size(); ++i) {
        const Slot& slot = slots[i];
        if (slot.info.form != RK_kSlotEmpty || slot.info.name[0] != '\0') {
            text += fmt::format("{:>8}  {:<28} {:<9} {}\n", slot.number, slot.info.name,
                                FormName(slot.info.form), FormsOf(slot.info));
            continue;
        }
        size_t last = i;
        while (last + 1 < slots.size() && slots[last + 1].info.form == RK_kSlotEmpty &&
               slots[last + 1].info.name[0] == '\0') {
            ++last;
        }
        const std::string run = last > i ? fmt::format("{}-{}", i, last) : std::to_string(i);
        text += fmt::format("{:>8}  {:<28} {}\n", run, "-", FormName(RK_kSlotEmpty));
        i = last;
    }
    return text;
}

std::string Json() {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Slot& slot : Slots()) {
        list.push_back({{"slot", slot.number},
                        {"function", slot.info.name},
                        {"picked", FormName(slot.info.form)},
                        {"sse2", slot.info.has_sse2_form},
                        {"ssse3", slot.info.has_ssse3_form}});
    }
    return list.dump(2) + "\n";
}

// The same on every machine: nothing of what was picked.
std::string Markdown() {
    std::string text =
        "# The slots of the standard function table\n\n"
        "Written by `rk slots --markdown`; what a machine has picked is told by `rk slots`.\n"
        "Slots that hold no function are left out.\n\n"
        "| slot | function | forms |\n|---:|---|---|\n";
    for (const Slot& slot : Slots()) {
        if (slot.info.name[0] == '\0') continue;
        text += fmt::format("| {} | `{}` | {} |\n", slot.number, slot.info.name, FormsOf(slot.info));
    }
    return text;
}

}  // namespace

int RunSlots(const std::vector<std::string>& arguments) {
    CLI::App app(
        "Tells what each slot of the standard function table holds, and which processor form was picked.",
        "rk slots");
    bool json = false, markdown = false;
    CLI::Option* as_json = app.add_flag("--json", json, "As JSON");
    app.add_flag("--markdown", markdown, "As the page docs/slots.md")->excludes(as_json);
    app.footer(
        "Acceleration modules (*.RVX) in the folder that RK_PLUGIN_PATH names may override\nslots.\n\n"
        "Examples:\n"
        "  rk slots\n"
        "  rk slots --json\n"
        "  rk slots --markdown > docs/slots.md\n");
    if (!Parse(app, arguments)) return kExitGood;
    const Library library;
    Print(json ? Json() : markdown ? Markdown() : Table());
    return kExitGood;
}
