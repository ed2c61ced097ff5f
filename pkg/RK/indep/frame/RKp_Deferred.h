// A stretch that must run to its end before a failure can be shown.
#ifndef RKP_DEFERRED_H
#define RKP_DEFERRED_H

#include "RK/host/KIT.h"
#include "RK/indep/frame/RKp_Border.h"

// Runs work() as RKp_AtBorder does, with all reports held back until it is over. When the bracket cannot be
// opened its error is the result, and work() does not run. Otherwise the bracket is closed on every path; a
// failure to close it is the result only if work() had none.
template <class Work>
RK_Long RKp_WithReportsDeferred(Work&& work) {
    struct Bracket {
        KIT_DeferredReporting cookie = {nullptr};
        bool open = false;
        RK_Long close() {
            open = false;
            return KIT_DeferredReportingEnd(0, 0, &cookie);
        }
        ~Bracket() {
            if (open) close();
        }
    } bracket;
    RK_Long error = KIT_DeferredReportingStart(16, &bracket.cookie);
    if (error != RK_kOK) return error;
    bracket.open = true;
    error = RKp_AtBorder(std::forward<Work>(work));
    const RK_Long closing = bracket.close();
    return error != RK_kOK ? error : closing;
}

#endif
