// What the operations on masks share: the test of a buffer, the walk over rows.
#ifndef RKP_UNO_PASS_H
#define RKP_UNO_PASS_H

#include <atomic>

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/frame/RKp_Progress.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/frame/RKp_SlotTypes.h"

// Reports a damaged buffer. True when it has a store to work on, whatever its magic.
inline bool RKp_CheckUno(const RK_UnoBuffer* buffer) {
    const bool stored = buffer != nullptr && buffer->pixels != nullptr && *buffer->pixels != nullptr;
    if (!stored || buffer->magic != RK_kUnoMagic) RKp_VERIFICATION(RKp_Text(RK_kMsg_DamagedMask));
    return stored;
}

inline bool RKp_HasSamples(const RK_UnoBuffer& buffer) { return buffer.width > 0 && buffer.height > 0; }

// row(i) for i from 0 to rows - 1 through `iterate`, which may call from several threads. Gives the code of
// the first check-in that asked to stop, or 0.
template <class Row>
RK_Long RKp_ForUnoRows(RKp_IterateGenericFunc* iterate, const RK_ProgressInfo* progress, int32_t rows,
                       const Row& row) {
    struct Job {
        const RK_ProgressInfo* progress;
        int32_t rows;
        const Row& row;
        std::atomic<RK_Long> error;
    } job = {progress, rows, row, {RK_kOK}};
    const auto one = [](void* refcon, RK_Long thread, RK_Long i, RK_Long) -> RK_Long {
        Job& all = *static_cast<Job*>(refcon);
        all.row(static_cast<int32_t>(i));
        if (thread == 0) {
            const RK_Long code =
                RKp_AtBorder([&] { RKp_CheckIn(all.progress, static_cast<int32_t>(i), all.rows); });
            if (code != RK_kOK) all.error = code;
        }
        return all.error;
    };
    const RK_Long result = iterate(rows, &job, one);
    return job.error != RK_kOK ? job.error.load() : result;
}

#endif
