// The client of the host's interface broker, through which the colour engine is reached.
#ifndef RKP_BROKER_H
#define RKP_BROKER_H

#include "RK/host/LNK.h"

// Takes the broker's entry. False, and nothing is kept, when it is null or cannot hand out interfaces. That
// the broker knows a colour engine is not asked here: whoever needs one asks then.
bool RKp_StartBroker(LNK_AddressProc* entry);

// Forgets the entry. Does nothing when the client was not started.
void RKp_StopBroker();

// The broker's procedure that hands out interfaces; null when the client was not started.
LNK_GetMethodV3Func* RKp_BrokerGetMethod();

#endif
