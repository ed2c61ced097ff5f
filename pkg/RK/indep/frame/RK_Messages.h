// The package's message table.
#ifndef RK_MESSAGES_H
#define RK_MESSAGES_H

#include "RK/host/KIT.h"

// Indexes of the table.
enum RK_Message : int32_t {
    RK_kMsg_InvalidSelector = 0,
    RK_kMsg_InvalidParameter = 1,
    RK_kMsg_ForeignWorldDisposed = 2,
    RK_kMsg_ImagePlaneBuffer = 3,
    RK_kMsg_BadParameter = 4,
    RK_kMsg_ModuleProblem = 5,
    RK_kMsg_UnimplementedMode = 6,
    RK_kMsg_NoiseTable = 7,
    RK_kMsg_CannotGuessAlpha = 8,
    RK_kMsg_Obsolete = 9,
    RK_kMsg_BlurMemory = 10,
    RK_kMsg_MaskMemory = 11,
    RK_kMsg_DamagedMask = 12,
    RK_kMsg_CannotUnlockMask = 13,
    RK_kMsg_GaussianWeights = 14,
    RK_kMsg_BlendingScratch = 15,
    RK_kMsg_DifferentChannelWorlds = 16,
    RK_kMsg_ChannelChunkMemory = 17,
    RK_kMsg_ImageBuffer = 18,
    RK_kMsg_InvalidPlatformWorld = 19,
    RK_kMsgCount = 20
};

RK_API extern const KIT_ZRef* const RK_G_zref;

#endif
