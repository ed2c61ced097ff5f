#include "RK/indep/filter/RK_LazyTiles.h"

#include <algorithm>

#include "RK/indep/frame/RKp_Border.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"

// ---- Operators ------------------------------------------------------------------------------------------

RK_LazyOperator::~RK_LazyOperator() = default;

namespace {

// What a rectangle can tell of the size.
GEO_Vector2T<int16_t> extentOf(int32_t width, int32_t height) {
    const auto held = [](int32_t size) {
        return static_cast<int16_t>(std::clamp(size, 0, int32_t{INT16_MAX}));
    };
    return {held(width), held(height)};
}

}  // namespace

GEO_Vector2T<int16_t> RK_LazyWorldCopyOperator::GetExtent() const {
    return source_ != nullptr ? extentOf(source_->width, source_->height) : extentOf(0, 0);
}

void RK_LazyWorldCopyOperator::DoItImp(const GEO_Rect& rect) {
    RKp_ThrowIf(RK_CopyBits_Draft(nullptr, source_, destination_, &rect, &rect));
}

RK_LazyFillUnoBufferOperator::RK_LazyFillUnoBufferOperator(boost::scoped_ptr<RK_UnoBuffer>* buffer,
                                                           uint16_t fill_value)
    : fill_value_(fill_value) {
    if (buffer != nullptr) buffer_.swap(*buffer);
}
RK_LazyFillUnoBufferOperator::~RK_LazyFillUnoBufferOperator() = default;

GEO_Vector2T<int16_t> RK_LazyFillUnoBufferOperator::GetExtent() const {
    return buffer_ ? extentOf(buffer_->width, buffer_->height) : extentOf(0, 0);
}

void RK_LazyFillUnoBufferOperator::DoItImp(const GEO_Rect& rect) {
    const bool deep = buffer_ && buffer_->depth == 16;
    RKp_ThrowIf(deep ? RK_FillDeepUnoBuffer(fill_value_, rect, buffer_.get())
                     : RK_FillUnoBuffer(static_cast<uint8_t>(fill_value_), rect, buffer_.get()));
}

// ---- Tiles ----------------------------------------------------------------------------------------------

namespace {

uint16_t tilesOf(int32_t extent, int32_t tile_size) {
    return static_cast<uint16_t>(std::max(0, (extent + tile_size - 1) / tile_size));
}

}  // namespace

RK_LazyTiles::RK_LazyTiles(int16_t tile_size, boost::scoped_ptr<RK_LazyOperator>* op)
    : tile_size_(tile_size), offset_{0, 0} {
    if (tile_size < 1 || op == nullptr || !*op)
        RKp_Throw(RKp_VERIFICATION("Bad parameter to RK_LazyTiles()"));
    const GEO_Vector2T<int16_t> extent = (*op)->GetExtent();
    tiles_x_ = tilesOf(extent.x, tile_size);
    tiles_y_ = tilesOf(extent.y, tile_size);
    // By steps that stay inline: others would leave the library's own copies of them among its exports.
    std::vector<std::vector<bool>> rows(tiles_y_);
    for (std::vector<bool>& row : rows) row = std::vector<bool>(tiles_x_, false);
    rows_.swap(rows);
    op_.swap(*op);
}

RK_LazyTiles::~RK_LazyTiles() = default;

void RK_LazyTiles::MakeValid(const GEO_Rect& rect) {
    MakeValidInFrame(
        {rect.left + offset_.x, rect.top + offset_.y, rect.right + offset_.x, rect.bottom + offset_.y});
}

void RK_LazyTiles::MakeValidInFrame(const GEO_LRect& rect) {
    const GEO_Vector2T<int16_t> extent = op_->GetExtent();
    const int32_t left = std::max(rect.left, 0), right = std::min<int32_t>(rect.right, extent.x);
    const int32_t top = std::max(rect.top, 0), bottom = std::min<int32_t>(rect.bottom, extent.y);
    if (left >= right || top >= bottom) return;
    // An extent that has grown since has no tiles there.
    const int32_t last_column = std::min((right - 1) / tile_size_, tiles_x_ - 1);
    const int32_t last_row = std::min((bottom - 1) / tile_size_, tiles_y_ - 1);
    for (int32_t row = top / tile_size_; row <= last_row; ++row)
        MakeRowValid(row, left / tile_size_, last_column, extent);
}

void RK_LazyTiles::MakeRowValid(int32_t row, int32_t first, int32_t last, GEO_Vector2T<int16_t> extent) {
    std::vector<bool>& valid = rows_[static_cast<size_t>(row)];
    for (int32_t column = first; column <= last; ++column) {
        const int32_t run = column;
        for (; column <= last && !valid[static_cast<size_t>(column)]; ++column)
            valid[static_cast<size_t>(column)] = true;
        if (column == run) continue;
        const int32_t size = tile_size_;
        op_->DoIt({static_cast<int16_t>(row * size), static_cast<int16_t>(run * size),
                   static_cast<int16_t>(std::min<int32_t>((row + 1) * size, extent.y)),
                   static_cast<int16_t>(std::min<int32_t>(column * size, extent.x))});
    }
}

void RK_LazyTilesCondition::ConditionalMakeValid(const GEO_Rect& rect) {
    if (condition_) MakeValidInFrame({rect.left, rect.top, rect.right, rect.bottom});
}
