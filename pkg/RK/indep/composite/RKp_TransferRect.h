// The default bodies of the transfer rects, behind their slots; RK_TransferRect.h tells what they do.
#ifndef RKP_TRANSFER_RECT_H
#define RKP_TRANSFER_RECT_H

#include "RK/indep/frame/RKp_SlotTypes.h"

RKp_TransferRectFunc RK_TransferRect_S;
RKp_TransferRectPlusFunc RK_TransferRectPlus_S;

#endif
