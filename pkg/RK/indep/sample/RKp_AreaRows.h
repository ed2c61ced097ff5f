// Rows of area samples.
#ifndef RKP_AREA_ROWS_H
#define RKP_AREA_ROWS_H

#include "RK/indep/sample/RK_SampleRow.h"

// Null for a sampler that is not one of the library's own straight area samplers.
RK_RowSampler<RK_Pixel8>* RKp_FindAreaRow(RK_Sampler<RK_Pixel8>* sampler);
RK_RowSampler<RK_Pixel16>* RKp_FindAreaRow(RK_Sampler<RK_Pixel16>* sampler);
RK_RowSampler<RK_PixelFloat>* RKp_FindAreaRow(RK_Sampler<RK_PixelFloat>* sampler);
// Of RK_AreaSample_Premul.
RK_RowSampler<RK_Pixel8> RKp_RowAreaPremul;

#endif
