// The border between code that throws and exports that return a result.
#ifndef RKP_BORDER_H
#define RKP_BORDER_H

#include <exception>
#include <utility>

#include "RK/host/KIT.h"
#include "RK/indep/frame/RK.h"

// The only way a failure is raised below the border.
[[noreturn]] inline void RKp_Throw(RK_Long code) { throw code; }

// Throws a failing result; 0 passes.
inline void RKp_ThrowIf(RK_Long code) {
    if (code != RK_kOK) RKp_Throw(code);
}

// Runs work(), which returns nothing, and gives the result: 0, a thrown RK_Long as it is, a std::exception as
// the host translates it. Anything else passes through.
template <class Work>
RK_Long RKp_AtBorder(Work&& work) {
    try {
        std::forward<Work>(work)();
        return RK_kOK;
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
