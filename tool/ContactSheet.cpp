#include "ContactSheet.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "Label.h"
#include "ModeNames.h"
#include "RK/indep/composite/RK_TransferRect.h"

namespace {

constexpr int32_t kColumns = 7, kCellWidth = 256, kCellHeight = 256, kGap = 12, kScale = 2;
constexpr int32_t kLabelSpace = kLabelHeight * kScale + 8;
constexpr RK_Pixel8 kGround{255, 40, 40, 44}, kInk{255, 235, 235, 235}, kFaint{255, 140, 140, 150};

RK_Pixel8* RowOf(const RK_World& world, int32_t y) {
    auto* first =
        static_cast<uint8_t*>(world.record.data) + static_cast<ptrdiff_t>(y) * world.record.rowbytes;
    return reinterpret_cast<RK_Pixel8*>(first);
}

// The part of [from, to) that each whole pixel of it covers: calls use(pixel, part).
template <class Use>
void Covered(double from, double to, int32_t limit, Use use) {
    const auto last = std::min(static_cast<int32_t>(std::ceil(to)), limit);
    for (auto i = static_cast<int32_t>(from); i < last; ++i)
        use(i, std::min(to, i + 1.0) - std::max(from, double(i)));
}

// The picture in another size, never a larger one: every pixel is the mean of the area that it covers,
// weighted by alpha.
WorldPtr Smaller(const RK_World& picture, int32_t width, int32_t height) {
    WorldPtr out = NewWorld(width, height, 8, "a thumbnail");
    const double step_x = double(picture.record.width) / width,
                 step_y = double(picture.record.height) / height;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            double area = 0, alpha = 0, red = 0, green = 0, blue = 0;
            Covered(y * step_y, (y + 1) * step_y, picture.record.height, [&](int32_t row, double part_y) {
                Covered(x * step_x, (x + 1) * step_x, picture.record.width,
                        [&](int32_t column, double part_x) {
                            const RK_Pixel8 p = RowOf(picture, row)[column];
                            const double part = part_x * part_y;
                            area += part;
                            alpha += part * p.alpha;
                            red += part * p.alpha * p.red;
                            green += part * p.alpha * p.green;
                            blue += part * p.alpha * p.blue;
                        });
            });
            const double by = alpha > 0 ? 1.0 / alpha : 0.0;
            RowOf(*out, y)[x] = {static_cast<uint8_t>(alpha / area + 0.5),
                                 static_cast<uint8_t>(red * by + 0.5), static_cast<uint8_t>(green * by + 0.5),
                                 static_cast<uint8_t>(blue * by + 0.5)};
        }
    }
    return out;
}

void Lay(const RK_World& front, int32_t mode, int32_t x, int32_t y, const RK_LayerDef* mask,
         RK_World& below) {
    const RK_CompositeModePlus plus(mode, 1.0f, nullptr, false, 0);
    CheckResult(RK_TransferRect(nullptr, nullptr, nullptr, RK_kBothFields, nullptr, &front.record, &plus,
                                nullptr, mask, x, y, &below.record),
                "the sheet");
}

WorldPtr Copy(const RK_World& world) {
    WorldPtr copy = NewWorld(world.record.width, world.record.height, 8, "a thumbnail");
    for (int32_t y = 0; y < world.record.height; ++y) {
        std::copy_n(RowOf(world, y), world.record.width, RowOf(*copy, y));
    }
    return copy;
}

class Sheet {
  public:
    Sheet(int32_t cells, int32_t width, int32_t height)
        : width_(width),
          height_(height),
          world_(NewWorld(kGap + kColumns * (kCellWidth + kGap),
                          kGap + (cells + kColumns - 1) / kColumns * (height + kLabelSpace + kGap), 8,
                          "the sheet")) {
        for (int32_t y = 0; y < world_->record.height; ++y)
            std::fill_n(RowOf(*world_, y), world_->record.width, kGround);
    }

    // The next cell: a picture on a chequered ground, and under it the number (none when empty) and the name.
    void Add(const RK_World& picture, const std::string& number, const std::string& name) {
        const int32_t left = kGap + cell_ % kColumns * (kCellWidth + kGap) + (kCellWidth - width_) / 2;
        const int32_t top = kGap + cell_ / kColumns * (height_ + kLabelSpace + kGap);
        for (int32_t y = 0; y < height_; ++y) {
            for (int32_t x = 0; x < width_; ++x) {
                const uint8_t light = ((x ^ y) & 8) != 0 ? 204 : 153;
                RowOf(*world_, top + y)[left + x] = {255, light, light, light};
            }
        }
        Lay(picture, RK_Xfer_Over, left, top, nullptr, *world_);
        const int32_t label_top = top + height_ + 6;
        const int32_t indent =
            number.empty() ? 0 : static_cast<int32_t>(number.size() + 1) * kLabelAdvance * kScale;
        DrawLabel(*world_, left, label_top, kScale, number, kFaint);
        DrawLabel(*world_, left + indent, label_top, kScale, name, kInk);
        ++cell_;
    }

    WorldPtr Take() { return std::move(world_); }

  private:
    const int32_t width_, height_;
    WorldPtr world_;
    int32_t cell_ = 0;
};

}  // namespace

WorldPtr ContactSheet(const PictureFile& back_file, const PictureFile& front_file, Progress& progress) {
    progress.Stage("reading " + back_file.Shown());
    const WorldPtr whole_back = back_file.Decode(8, progress);
    progress.Stage("reading " + front_file.Shown());
    const WorldPtr whole_front = front_file.Decode(8, progress);

    const double factor = std::min({1.0, double(kCellWidth) / whole_back->record.width,
                                    double(kCellHeight) / whole_back->record.height});
    const auto scaled = [factor](int32_t side) {
        return std::max(1, static_cast<int32_t>(side * factor + 0.5));
    };
    const WorldPtr back =
        Smaller(*whole_back, scaled(whole_back->record.width), scaled(whole_back->record.height));
    const WorldPtr front =
        Smaller(*whole_front, scaled(whole_front->record.width), scaled(whole_front->record.height));
    const int32_t x = (back->record.width - front->record.width) / 2;
    const int32_t y = (back->record.height - front->record.height) / 2;
    RK_Mask luma = {};
    luma.world = front->record;
    luma.mask_x = static_cast<int16_t>(x);
    luma.mask_y = static_cast<int16_t>(y);
    luma.mask_kind = RK_kMaskLuma;

    progress.Stage("drawing the modes");
    const auto modes = static_cast<int32_t>(Modes().size());
    Sheet sheet(modes + 2, back->record.width, back->record.height);
    sheet.Add(*back, "", "back");
    WorldPtr alone = Copy(*back);
    for (int32_t row = 0; row < alone->record.height; ++row)
        std::fill_n(RowOf(*alone, row), alone->record.width, RK_Pixel8{});
    Lay(*front, RK_Xfer_Over, x, y, nullptr, *alone);
    sheet.Add(*alone, "", "front");
    for (int32_t i = 0; i < modes; ++i) {
        const Mode& mode = Modes()[static_cast<size_t>(i)];
        const WorldPtr result = Copy(*back);
        Lay(*front, mode.number, x, y, mode.number == RK_Xfer_MatteMix ? &luma.world : nullptr, *result);
        sheet.Add(*result, std::to_string(mode.number), mode.name);
        progress.Report(i, modes);
    }
    return sheet.Take();
}
