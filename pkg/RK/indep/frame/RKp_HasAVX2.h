#ifndef RKP_HAS_AVX2_H
#define RKP_HAS_AVX2_H

// Whether bodies of 32-byte vectors may run. The processor record does not tell of them, so the processor
// itself is asked; where the record forbids vector code the answer is no.
bool RKp_HasAVX2();

#endif
