// LNK, the host's interface broker: procedures by name.
#ifndef RK_HOST_LNK_H
#define RK_HOST_LNK_H

#include "RK/host/Long.h"

using LNK_Proc = void();

// The address of one of the broker's own procedures, null for a name it does not know.
using LNK_AddressProc = LNK_Proc*(const char* name);

// One operation of an interface: its name, and its place in the table that the caller wants filled.
struct LNK_Method {
    const char* name;
    int32_t slot;
};

// The broker's procedure of this name hands out an interface: it writes the address of each of `count` methods to
// its slot of `table`. 0; 3 when the broker knows no such interface, and nothing is written.
constexpr const char* LNK_kGetMethodV3 = "LNKGetMethodV3Proc";
using LNK_GetMethodV3Func = RK_Long(const char* interface_name, const LNK_Method* methods, int32_t count,
                                    LNK_Proc** table);

#endif
