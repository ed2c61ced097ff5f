// Every mode on one pixel at 16 bits.
#include "RK/indep/composite/RKp_PixelFunctions.h"

using Pixel = RK_Pixel16;

RK_PixelXfer<Pixel>* const RKp_G_Xfer1_table16[RK_kPixelTableSize] = {
#define RK_MODE RKP_PIXEL_PLAIN
#define RK_ROW_MODE RKP_PIXEL_NONE
#include "RK/indep/composite/RKp_Modes.def"
};

RK_PixelXferOpacity<Pixel>* const RKp_G_Xfer1_Opacity_table16[RK_kPixelTableSize] = {
#define RK_MODE RKP_PIXEL_OPACITY
#define RK_ROW_MODE RKP_PIXEL_NONE
#include "RK/indep/composite/RKp_Modes.def"
};

RK_PixelXferOpacity2<Pixel>* const RKp_G_Xfer1_Opacity2_table16[RK_kPixelTableSize] = {
#define RK_MODE RKP_PIXEL_OPACITY2
#define RK_ROW_MODE RKP_PIXEL_NONE
#include "RK/indep/composite/RKp_Modes.def"
};
