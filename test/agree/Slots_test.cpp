// Every processor variant of the slot list against its default body. A variant runs when the machine has its
// instructions, whatever processor record the suite runs under.
#include "RK/indep/frame/RKp_SlotBodies.h"
#include "refhost/RefHost.h"
#include "test/agree/Checkers.h"
#include "test/agree/SamplerChecker.h"

namespace {

template <class Function>
class Agree : public testing::Test {
  public:
    Agree(Function* body, Function* variant) : body_(body), variant_(variant) {}
    void TestBody() override { agree::Checker<Function>::compare(body_, variant_); }

  private:
    Function *body_, *variant_;
};

// A column of the list: with a variant a test, and a Checker for the function type must stand; without,
// nothing.
template <class Function>
void add(const char* slot, const char* form, bool runs_here, Function* body, Function* variant) {
    if (!runs_here) return;
    const std::string name = std::string(slot) + "_" + form;
    testing::RegisterTest("Agree", name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [=]() -> testing::Test* { return new Agree<Function>(body, variant); });
}
template <class Function>
void add(const char*, const char*, bool, Function*, std::nullptr_t) {}

const bool registered = [] {
    const KIT_CPU_Data machine = RefHost::DetectCPU();
#define RK_SLOT(number, name, type, body, sse2, ssse3)           \
    add<type>(#name, "sse2", machine.has_sse2 != 0, body, sse2); \
    add<type>(#name, "ssse3", machine.has_ssse3 != 0, body, ssse3);
#include "RK/indep/frame/RKp_Slots.def"
    return true;
}();

}  // namespace
