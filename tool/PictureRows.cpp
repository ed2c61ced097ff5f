#include "PictureRows.h"

#include "RK/indep/composite/RK_Xfer.h"
#include "Samples.h"

namespace {

template <class C>
constexpr C kFull = 1;
template <>
constexpr uint8_t kFull<uint8_t> = 255;
template <>
constexpr uint16_t kFull<uint16_t> = 32768;

// Only float can leave the range of alpha.
uint8_t InRange(uint8_t alpha) { return alpha; }
uint16_t InRange(uint16_t alpha) { return alpha; }
float InRange(float alpha) { return alpha > 0.0f ? std::min(alpha, 1.0f) : 0.0f; }

template <class P, class S>
void Unpack(const S* samples, int channels, int32_t count, P* row) {
    using C = RK_Channel<P>;
    const bool has_alpha = channels == 2 || channels == 4, has_colour = channels >= 3;
    for (int32_t x = 0; x < count; ++x, samples += channels) {
        row[x].red = ToChannel<C>(samples[0]);
        row[x].green = has_colour ? ToChannel<C>(samples[1]) : row[x].red;
        row[x].blue = has_colour ? ToChannel<C>(samples[2]) : row[x].red;
        row[x].alpha = has_alpha ? ToChannel<C>(samples[channels - 1]) : kFull<C>;
    }
}

template <class P, class S>
void Pack(const P* row, int32_t count, S* samples, int channels) {
    for (int32_t x = 0; x < count; ++x, samples += channels) {
        samples[0] = ToSample<S>(row[x].red);
        samples[1] = ToSample<S>(row[x].green);
        samples[2] = ToSample<S>(row[x].blue);
        if (channels == 4) samples[3] = InRange(ToSample<S>(row[x].alpha));
    }
}

}  // namespace

template <class P, class S>
void PictureRows::PutAt(int32_t y, const S* samples, int channels, AlphaKind alpha) {
    using C = RK_Channel<P>;
    P* row = Row<P>(y);
    if (alpha != AlphaKind::Premultiplied || as_stored_) {
        Unpack(samples, channels, Width(), row);
        for (int32_t x = 0; x < Width(); ++x) row[x].alpha = InRange(row[x].alpha);
        return;
    }
    float_row_.resize(static_cast<size_t>(Width()));
    Unpack(samples, channels, Width(), float_row_.data());
    UnmultiplyRow(float_row_.data(), Width());
    for (int32_t x = 0; x < Width(); ++x) {
        const RK_PixelFloat& p = float_row_[static_cast<size_t>(x)];
        row[x] = {InRange(ToChannel<C>(p.alpha)), ToChannel<C>(p.red), ToChannel<C>(p.green),
                  ToChannel<C>(p.blue)};
    }
}

template <class P, class S>
void PictureRows::GetAt(int32_t y, S* samples, int channels, AlphaKind alpha) {
    const P* row = Row<P>(y);
    if (alpha != AlphaKind::Premultiplied) {
        Pack(row, Width(), samples, channels);
        return;
    }
    float_row_.resize(static_cast<size_t>(Width()));
    for (int32_t x = 0; x < Width(); ++x) {
        float_row_[static_cast<size_t>(x)] = {InRange(ToSample<float>(row[x].alpha)),
                                              ToSample<float>(row[x].red), ToSample<float>(row[x].green),
                                              ToSample<float>(row[x].blue)};
    }
    PremultiplyRow(float_row_.data(), Width());
    Pack(float_row_.data(), Width(), samples, channels);
}

template <class P>
bool PictureRows::OpaqueAt() const {
    for (int32_t y = 0; y < Height(); ++y) {
        const P* row = Row<P>(y);
        for (int32_t x = 0; x < Width(); ++x) {
            if (!(row[x].alpha >= kFull<RK_Channel<P>>)) return false;
        }
    }
    return true;
}

bool PictureRows::Opaque() const {
    switch (world_.Depth()) {
        case 8: return OpaqueAt<RK_Pixel8>();
        case 16: return OpaqueAt<RK_Pixel16>();
        default: return OpaqueAt<RK_PixelFloat>();
    }
}

template <class S>
void PictureRows::Put(int32_t y, const S* samples, int channels, AlphaKind alpha) {
    switch (world_.Depth()) {
        case 8: return PutAt<RK_Pixel8>(y, samples, channels, alpha);
        case 16: return PutAt<RK_Pixel16>(y, samples, channels, alpha);
        default: return PutAt<RK_PixelFloat>(y, samples, channels, alpha);
    }
}

template <class S>
void PictureRows::Get(int32_t y, S* samples, int channels, AlphaKind alpha) {
    switch (world_.Depth()) {
        case 8: return GetAt<RK_Pixel8>(y, samples, channels, alpha);
        case 16: return GetAt<RK_Pixel16>(y, samples, channels, alpha);
        default: return GetAt<RK_PixelFloat>(y, samples, channels, alpha);
    }
}

template void PictureRows::Put(int32_t, const uint8_t*, int, AlphaKind);
template void PictureRows::Put(int32_t, const uint16_t*, int, AlphaKind);
template void PictureRows::Put(int32_t, const float*, int, AlphaKind);
template void PictureRows::Get(int32_t, uint8_t*, int, AlphaKind);
template void PictureRows::Get(int32_t, uint16_t*, int, AlphaKind);
template void PictureRows::Get(int32_t, float*, int, AlphaKind);
