// Building the tables.
#include "RK/indep/sample/RK_SummedAreaTable.h"

#include <cstring>
#include <limits>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_HostBlock.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldXT.h"

namespace {

template <class P>
RK_PixelDouble premultiplied(const P& p) {
    const double full = static_cast<double>(RKp_Depth<P>::kFull);
    if (p.alpha == 0) return {0, 0, 0, 0};
    const RK_PixelDouble d = {static_cast<double>(p.alpha), static_cast<double>(p.red), static_cast<double>(p.green),
                              static_cast<double>(p.blue)};
    if (d.alpha == full) return d;
    const double a = d.alpha / full;
    return {d.alpha, d.red * a, d.green * a, d.blue * a};
}

// Running sums of two rows, each with a zero cell before its first: S(x, y) = p + S(x-1, y) + S(x, y-1) - S(x-1, y-1).
template <class P, class Entry>
void build(const RK_WorldX<P>& world, Entry* cells) {
    using Cell = decltype(Entry::alpha);
    const int32_t width = world.width();
    const int64_t row_bytes = (int64_t{width} + 1) * static_cast<int64_t>(sizeof(RK_PixelDouble));
    const RKp_HostBlock<char> sums(row_bytes * 2 + 16, RK_kMsg_BlurMemory);
    const auto address = reinterpret_cast<uintptr_t>(sums.get());
    auto* above = reinterpret_cast<RK_PixelDouble*>((address + 15) & ~uintptr_t{15});
    auto* now = above + width + 1;
    std::memset(static_cast<void*>(above), 0, static_cast<size_t>(row_bytes * 2));
    for (int32_t y = 0; y < world.height(); ++y) {
        const P* row = world.row(y);
        for (int32_t x = 0; x < width; ++x, ++cells) {
            const RK_PixelDouble p = premultiplied(row[x]);
            const RK_PixelDouble &left = now[x], &top = above[x + 1], &corner = above[x];
            RK_PixelDouble& sum = now[x + 1];
            const double scale = 1.0 / static_cast<double>((int64_t{x} + 1) * (int64_t{y} + 1));
            sum = {p.alpha + left.alpha + top.alpha - corner.alpha, p.red + left.red + top.red - corner.red,
                   p.green + left.green + top.green - corner.green, p.blue + left.blue + top.blue - corner.blue};
            *cells = {static_cast<Cell>(sum.alpha * scale), static_cast<Cell>(sum.red * scale),
                      static_cast<Cell>(sum.green * scale), static_cast<Cell>(sum.blue * scale)};
        }
        std::swap(above, now);
    }
}

// Makes `table` large enough; null becomes a table.
template <class Entry>
void reserve(Entry*& table, int64_t cells) {
    if (cells > std::numeric_limits<ptrdiff_t>::max() / static_cast<ptrdiff_t>(sizeof(Entry)))
        RKp_Throw(RK_kOutOfMemory);
    const size_t bytes = static_cast<size_t>(cells) * sizeof(Entry);
    const char* name = RKp_Text(RK_kMsg_BlurMemory);
    void* block = table == nullptr ? KIT_AllocatePtr(bytes, name) : KIT_ResizePtr(table, bytes, name);
    if (block == nullptr) RKp_Throw(RK_kOutOfMemory);
    table = static_cast<Entry*>(block);
}

template <class Entry>
void release(Entry*& table) {
    KIT_FreePtr(table);
    table = nullptr;
}

}  // namespace

RK_SummedAreaTable::RK_SummedAreaTable(const RK_World* world)
    : float_table(nullptr), double_table(nullptr), width(0), height(0) {
    try {
        Build(world);
    } catch (...) {
        release(float_table);
        release(double_table);
        throw;
    }
}

RK_SummedAreaTable::~RK_SummedAreaTable() {
    release(float_table);
    release(double_table);
}

void RK_SummedAreaTable::Build(const RK_World* world) {
    width = height = 0;
    if (world == nullptr) RKp_Throw(RK_kBadParam);
    const RK_LayerDef& record = world->record;
    if (record.data == nullptr || record.width < 1 || record.height < 1) return;
    const int64_t cells = int64_t{record.width} * record.height;
    const RK_Long depth = world->Depth();
    if (depth == 8 || depth == 16) {
        release(double_table);
        reserve(float_table, cells);
        if (depth == 8) {
            build(RK_WorldX<RK_Pixel8>(&record, false), float_table);
        } else {
            build(RK_WorldX<RK_Pixel16>(&record, false), float_table);
        }
    } else {
        release(float_table);
        reserve(double_table, cells);
        build(RK_WorldX<RK_PixelFloat>(&record, false), double_table);
    }
    width = record.width;
    height = record.height;
}
