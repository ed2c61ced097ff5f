// The curve of every Gaussian of the package.
#ifndef RKP_GAUSSIAN_VALUE_H
#define RKP_GAUSSIAN_VALUE_H

// The curve at `d`, the distance as a fraction of the support: 1 at 0, almost 0 at 1, and 0 beyond. It is
// even; NaN gives NaN, and below -1 the shifted exponential goes on.
double RKp_GaussianValue(double d);

#endif
