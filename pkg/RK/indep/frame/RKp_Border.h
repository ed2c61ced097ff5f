// The border between code that throws and exports that return a result.
#ifndef RKP_BORDER_H
#define RKP_BORDER_H

#include <exception>
#include <type_traits>
#include <utility>

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK.h"

// The only way a failure is raised below the border.
[[noreturn]] inline void RKp_Throw(RK_Long code) { throw code; }

// Throws a failing result; 0 passes.
inline void RKp_ThrowIf(RK_Long code) {
    if (code != RK_kOK) RKp_Throw(code);
}

// Runs work() and gives the result: what it returns (0 when it returns nothing), a thrown RK_Long as it is, a
// std::exception as the host translates it. Anything else passes through.
template <class Work>
RK_Long RKp_AtBorder(Work&& work) {
    using Result = decltype(work());
    static_assert(std::is_void_v<Result> || std::is_same_v<Result, RK_Long>, "work gives an RK_Long or nothing");
    try {
        if constexpr (std::is_void_v<Result>) {
            std::forward<Work>(work)();
            return RK_kOK;
        } else {
            return std::forward<Work>(work)();
        }
    } catch (RK_Long code) {
        return code;
    } catch (const std::exception& error) {
        return KIT_TranslateAndReportException(error);
    }
}

// A step that always runs; its failure is kept only if none stands yet.
template <class Step>
void RKp_Guarded(RK_Long& error, Step&& step) {
    const RK_Long now = RKp_AtBorder(std::forward<Step>(step));
    if (error == RK_kOK) error = now;
}

#endif
