// The offscreen mouse registry: who tells the mouse's place for a graphics port that is on no screen.
#ifndef RKP_MOUSE_REGISTRY_H
#define RKP_MOUSE_REGISTRY_H

#include <boost/function.hpp>
#include <map>

#include "RK/host/GEO.h"

struct CGrafPort;
using RKp_MouseHandlers = std::map<CGrafPort*, boost::function0<Point>>;

// Null before birth and after death.
extern RKp_MouseHandlers* RKp_G_MouseHandlers;

void RKp_MakeMouseRegistry();  // throws when there is no memory
void RKp_DisposeMouseRegistry();

#endif
