// Compiled with -mfma beside the build's own switches: only those keep the compiler from fusing here.
float BuildSwitches_ProductPlusSum(float a, float b, float c);
float BuildSwitches_ProductPlusSum(float a, float b, float c) { return a * b + c; }
