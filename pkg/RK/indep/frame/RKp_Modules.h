// The scan for acceleration modules, and their end.
#ifndef RKP_MODULES_H
#define RKP_MODULES_H

#include "RK/indep/frame/RK_Modules.h"

// Declares the package's interest in module files; the host visits them and the modules are loaded. A module
// that fails is reported and left out, and the result does not tell of it: 0, or the failure of the scan
// itself.
RK_Long RKp_StartModuleScan();

// Unloads what was loaded, in that order. 0 or the first error. Does nothing when no scan was started.
RK_Long RKp_UnloadModules();

#endif
