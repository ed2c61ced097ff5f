// Lazy tiles: work on a large image, put off until the parts of it are first needed.
#ifndef RK_LAZY_TILES_H
#define RK_LAZY_TILES_H

#include <boost/scoped_ptr.hpp>
#include <vector>

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/frame/RK.h"

// Work that can be done rectangle by rectangle.
class RK_API RK_LazyOperator {
  public:
    // Width and height of all that the operator can do.
    virtual GEO_Vector2T<int16_t> GetExtent() const = 0;
    virtual ~RK_LazyOperator();
    // Does the work on a rectangle within the extent. Throws an RK_Long.
    void DoIt(GEO_Rect rect) { DoItImp(rect); }

  protected:
    virtual void DoItImp(const GEO_Rect& rect) = 0;
};

// Copies a world to another, at the same place, between any two depths. Neither is owned; a null one is a bad
// parameter of the copy.
class RK_API RK_LazyWorldCopyOperator : public RK_LazyOperator {
  public:
    RK_LazyWorldCopyOperator(RK_LayerDef* source, RK_LayerDef* destination)
        : source_(source), destination_(destination) {}
    void SetSourceWorld(RK_LayerDef* source) { source_ = source; }
    // The source's; none without one.
    GEO_Vector2T<int16_t> GetExtent() const override;

  protected:
    void DoItImp(const GEO_Rect& rect) override;

  private:
    RK_LayerDef* source_;
    RK_LayerDef* destination_;
};

// Fills a mask buffer with one value: at depth 16 with all of it, at others with its low byte.
class RK_API RK_LazyFillUnoBufferOperator : public RK_LazyOperator {
  public:
    // Takes the buffer over, which leaves `*buffer` empty. It was made by `new` and is deleted with the
    // operator. Without a buffer there is no extent.
    RK_LazyFillUnoBufferOperator(boost::scoped_ptr<RK_UnoBuffer>* buffer, uint16_t fill_value);
    ~RK_LazyFillUnoBufferOperator() override;
    RK_UnoBuffer* GetBuffer() const { return buffer_.get(); }
    GEO_Vector2T<int16_t> GetExtent() const override;

  protected:
    // A damaged buffer is reported and filled all the same.
    void DoItImp(const GEO_Rect& rect) override;

  private:
    boost::scoped_ptr<RK_UnoBuffer> buffer_;
    uint16_t fill_value_;
};

// An extent cut into square tiles, which remembers those whose work is done. One thread at a time. Where an
// operator throws out of a call, the tiles that it was at count as done: the object is of no more use.
class RK_API RK_LazyTiles {
  public:
    // Takes the operator over, which leaves `*op` empty, and asks it for its extent: the number of tiles
    // stays as it is then. Throws 3, with a report and nothing taken, for a `tile_size` below 1 and where
    // there is no operator; std::bad_alloc, and nothing taken, where the tiles find no memory.
    RK_LazyTiles(int16_t tile_size, boost::scoped_ptr<RK_LazyOperator>* op);
    ~RK_LazyTiles();
    RK_LazyTiles(const RK_LazyTiles&) = delete;
    RK_LazyTiles& operator=(const RK_LazyTiles&) = delete;

    RK_LazyOperator* GetOperator() const { return op_.get(); }
    // What is added to the rectangles of MakeValid to bring them into the operator's frame; (0, 0) at first.
    void SetOffset(GEO_Vector2T<int16_t> offset) { offset_ = offset; }

    // Has the work done on the tiles under the rectangle that were not done before; tiles beside one another
    // in a row in one call. Parts outside the extent count for nothing.
    void MakeValid(const GEO_Rect& rect);

  protected:
    GEO_Vector2T<int16_t> GetOffset() const { return offset_; }
    // The same for a rectangle in the operator's frame.
    void MakeValidInFrame(const GEO_LRect& rect);

  private:
    void MakeRowValid(int32_t row, int32_t first, int32_t last, GEO_Vector2T<int16_t> extent);

    boost::scoped_ptr<RK_LazyOperator> op_;
    int16_t tile_size_;
    uint16_t tiles_x_, tiles_y_;
    std::vector<std::vector<bool>> rows_;  // a set bit: a valid tile
    GEO_Vector2T<int16_t> offset_;
};

// Tiles whose work can be switched off.
class RK_API RK_LazyTilesCondition : public RK_LazyTiles {
  public:
    RK_LazyTilesCondition(int16_t tile_size, boost::scoped_ptr<RK_LazyOperator>* op, bool condition)
        : RK_LazyTiles(tile_size, op), condition_(condition) {}
    void SetCondition(bool condition) { condition_ = condition; }

    // Where the condition is true, MakeValid of a rectangle in the operator's own frame, whatever the offset.
    void ConditionalMakeValid(const GEO_Rect& rect);

  private:
    bool condition_;
};

#endif
