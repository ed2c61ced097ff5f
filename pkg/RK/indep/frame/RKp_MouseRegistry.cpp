#include "RK/indep/frame/RKp_MouseRegistry.h"

RKp_MouseHandlers* RKp_G_MouseHandlers = nullptr;

void RKp_MakeMouseRegistry() { RKp_G_MouseHandlers = new RKp_MouseHandlers; }

void RKp_DisposeMouseRegistry() {
    delete RKp_G_MouseHandlers;
    RKp_G_MouseHandlers = nullptr;
}
