// The rows of every mode at float.
#include "RK/indep/composite/RKp_RowTables.h"

RKP_INSTANTIATE_ROWS(RK_PixelFloat);
