// The result type and the visibility marks that host and library share.
#ifndef RK_HOST_LONG_H
#define RK_HOST_LONG_H

#include <cstddef>
#include <cstdint>

// Results, thrown codes and scalar parameters told as long. Fixed-width types stand in every record and behind
// every pointer; arithmetic never depends on the width of this one.
using RK_Long = long;

// RK_API marks what libRK exports, RK_HOST_API what the host's packages export to it.
#define RK_API __attribute__((visibility("default")))
#define RK_HOST_API __attribute__((visibility("default")))

#endif
