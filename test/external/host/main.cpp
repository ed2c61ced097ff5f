// A host outside the tree: starts the package, lays one picture over another, stops.
#include <RK/indep/composite/RK_TransferRect.h>
#include <RK/indep/frame/RK_Birth.h>
#include <RK/indep/passes/RK_Fill.h>
#include <RK/indep/world/RK_World.h>

#include <cstdio>
#include <memory>

int main() {
    if (RK_Birth() != 0) return 1;
    RK_Pixel8 got = {};
    {
        const std::unique_ptr<RK_World> back(RK_World::New(8, 4, 8, RK_kWorldClear));
        const std::unique_ptr<RK_World> front(RK_World::New(8, 4, 8, RK_kWorldClear));
        const RK_Pixel8 blue = {255, 0, 0, 255}, red = {128, 255, 0, 0};
        if (RK_Fill(nullptr, &blue, nullptr, &back->record) != 0) return 1;
        if (RK_Fill(nullptr, &red, nullptr, &front->record) != 0) return 1;
        const RK_CompositeModePlus over(RK_Xfer_Over, 1.0f, nullptr, false, 0);
        if (RK_TransferRect(nullptr, nullptr, nullptr, RK_kBothFields, nullptr, &front->record, &over, nullptr, nullptr,
                            0, 0, &back->record) != 0)
            return 1;
        got = *static_cast<const RK_Pixel8*>(back->record.data);
    }
    std::printf("%d %d %d %d\n", got.alpha, got.red, got.green, got.blue);
    if (got.alpha != 255 || got.red != 128 || got.green != 0 || got.blue != 127) return 1;
    return RK_Death() == 0 ? 0 : 1;
}
