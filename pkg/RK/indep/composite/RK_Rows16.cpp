// The rows of every mode at 16 bits.
#include "RK/indep/composite/RKp_RowTables.h"

RKP_INSTANTIATE_ROWS(RK_Pixel16);
