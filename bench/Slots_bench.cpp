// Every row function of the slot list, as default and as each variant that this machine can run.
#include "RK/indep/frame/RKp_SlotBodies.h"
#include "bench/Bench.h"

namespace {

using bench::Alphas;
using bench::Size;

std::string join(const std::string& a, const char* b, const char* c, const char* d) {
    return a + "/" + b + "/" + c + "/" + d;
}

// ---- One kind of row function each ----------------------------------------------------------------------

template <class P>
void add(const std::string& name, RK_Long (*scan)(RK_Long, const P*, P*)) {
    for (Alphas kind : bench::kAlphas) {
        for (const Size& size : {bench::kRow, bench::kFrame}) {
            const size_t bytes = sizeof(P) * static_cast<size_t>(size.pixels);
            benchmark::RegisterBenchmark(
                join(name, size.name, "apart", bench::name(kind)).c_str(), [=](benchmark::State& state) {
                    const std::vector<P> src = bench::pixels<P>(size.pixels, kind);
                    std::vector<P> dst(src.size());
                    bench::measure(state, size.pixels, bytes,
                                   [&] { scan(size.pixels, src.data(), dst.data()); });
                });
            // Several rows to a round.
            const RK_Long rows = size.pixels == bench::kRow.pixels ? 16 : 1;
            benchmark::RegisterBenchmark(
                join(name, size.name, "in_place", bench::name(kind)).c_str(),
                [=](benchmark::State& state) {
                    const std::vector<P> fresh = bench::pixels<P>(size.pixels * rows, kind);
                    std::vector<P> dst(fresh.size());
                    bench::measureRenewed(
                        state, size.pixels * rows, bytes * static_cast<size_t>(rows),
                        [&] { std::memcpy(dst.data(), fresh.data(), fresh.size() * sizeof(P)); },
                        [&] {
                            for (RK_Long i = 0; i < rows; ++i)
                                scan(size.pixels, nullptr, dst.data() + i * size.pixels);
                        });
                })
                ->UseManualTime();
        }
    }
}

template <class P>
void add(const std::string& name,
         RK_Long (*merge)(RK_Long, const P*, typename RKp_Depth<P>::Channel, const P*, P*)) {
    using Channel = typename RKp_Depth<P>::Channel;
    const Channel full = static_cast<Channel>(RKp_Depth<P>::kFull),
                  half = static_cast<Channel>(RKp_Depth<P>::kGrey);
    for (Alphas kind : bench::kAlphas) {
        for (const Size& size : {bench::kRow, bench::kFrame}) {
            const size_t bytes = sizeof(P) * static_cast<size_t>(size.pixels);
            for (bool with_matte : {false, true}) {
                benchmark::RegisterBenchmark(
                    join(name, size.name, with_matte ? "half_with_matte" : "full", bench::name(kind)).c_str(),
                    [=](benchmark::State& state) {
                        const std::vector<P> src = bench::pixels<P>(size.pixels, kind);
                        const std::vector<P> matte = bench::pixels<P>(size.pixels, Alphas::Random);
                        std::vector<P> dst(src.size());
                        bench::measure(state, size.pixels, bytes, [&] {
                            merge(size.pixels, src.data(), with_matte ? half : full,
                                  with_matte ? matte.data() : nullptr, dst.data());
                        });
                    });
            }
        }
    }
}

// What works on whole worlds is measured elsewhere.
template <class... Arguments>
void add(const std::string&, RK_Long (*)(Arguments...)) {}
template <class... Arguments>
void add(const std::string&, void (*)(Arguments...)) {}
inline void add(const std::string&, RK_Long (*)(...)) {}

// ---- The list -------------------------------------------------------------------------------------------

template <class Function>
void addForms(const char* name, Function* body, Function* sse2, Function* ssse3) {
    if (body) add(std::string(name) + "/default", body);
    if (sse2 && bench::machine().has_sse2) add(std::string(name) + "/sse2", sse2);
    if (ssse3 && bench::machine().has_ssse3) add(std::string(name) + "/ssse3", ssse3);
}

const bool registered = [] {
#define RK_SLOT(number, name, type, body, sse2, ssse3) addForms<type>(#name, body, sse2, ssse3);
#include "RK/indep/frame/RKp_Slots.def"
    return true;
}();

}  // namespace
