// How a picture lies: still poses, poses in time, and the matrices that the library draws through.
#ifndef TOOL_POSES_H
#define TOOL_POSES_H

#include <string>
#include <vector>

#include "RK/host/GEO.h"

struct Pose {
    double rotate = 0.0;  // degrees, clockwise
    double sx = 1.0, sy = 1.0;
    double x = 0.0, y = 0.0;  // a shift, in pixels
};

// What --rotate, --scale and --translate say; an empty text leaves its part as above. Throws a Failure of status 2.
Pose PoseOf(const std::string& rotate, const std::string& scale, const std::string& translate);

struct Key {
    double time = 0.0;  // in frames
    Pose pose;
};

// From source to destination: scaled and turned about the anchor, then moved. Whole quarter turns are exact.
GEO_Matrix3 MatrixOf(const Pose& pose, GEO_Vector2T<double> anchor);

// The keys of "TIME:NAME=VALUE,...; TIME:...", at least two, in rising time. A name is rotate, scale, sx, sy,
// x or y; what a key does not name stays as in the key before it, or in `still` for the first. Throws a
// Failure of status 2.
std::vector<Key> KeysOf(const std::string& text, const Pose& still);

// On straight lines between the keys; before the first and after the last it rests.
Pose PoseAt(const std::vector<Key>& keys, double time);

// `samples` matrices, evenly spread from time 0 to `open` frames, both ends included.
std::vector<GEO_Matrix3> MotionOf(const std::vector<Key>& keys, double open, int samples,
                                  GEO_Vector2T<double> anchor);

#endif
