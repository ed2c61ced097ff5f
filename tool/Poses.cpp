#include "Poses.h"

#include <cmath>
#include <utility>

#include "ArgumentWords.h"
#include "Failure.h"

namespace {

constexpr double kRadian = 0.017453292519943295;

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\n"), last = text.find_last_not_of(" \t\n");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

void ReadSetting(const std::string& text, Pose& pose) {
    const size_t equals = text.find('=');
    const std::string name = Trimmed(text.substr(0, equals));
    if (equals == std::string::npos) Misuse("--motion: '" + OneLine(text) + "': NAME=VALUE is wanted");
    const std::string value = Trimmed(text.substr(equals + 1)), option = "--motion: " + OneLine(name);
    if (name == "rotate") {
        pose.rotate = Number(option, value, -1e6, 1e6);
    } else if (name == "scale") {
        pose.sx = pose.sy = Number(option, value, -1000, 1000);
    } else if (name == "sx" || name == "sy") {
        (name == "sx" ? pose.sx : pose.sy) = Number(option, value, -1000, 1000);
    } else if (name == "x" || name == "y") {
        (name == "x" ? pose.x : pose.y) = Number(option, value, -1e5, 1e5);
    } else {
        Misuse(option + ": unknown; rotate, scale, sx, sy, x or y is wanted");
    }
}

}  // namespace

Pose PoseOf(const std::string& rotate, const std::string& scale, const std::string& translate) {
    Pose pose;
    if (!rotate.empty()) pose.rotate = Number("--rotate", rotate, -1e6, 1e6);
    if (scale.find(',') != std::string::npos) {
        const auto [sx, sy] = PairOf("--scale", scale, 1000);
        pose.sx = sx;
        pose.sy = sy;
    } else if (!scale.empty()) {
        pose.sx = pose.sy = Number("--scale", scale, -1000, 1000);
    }
    if (!translate.empty()) {
        const auto [x, y] = PairOf("--translate", translate, 1e5);
        pose.x = x;
        pose.y = y;
    }
    return pose;
}

GEO_Matrix3 MatrixOf(const Pose& pose, GEO_Vector2T<double> anchor) {
    const double turn = std::fmod(pose.rotate, 360.0);
    double c = std::cos(turn * kRadian), s = std::sin(turn * kRadian);
    if (std::fmod(turn, 90.0) == 0.0) {
        c = std::round(c);
        s = std::round(s);
    }
    const double a = pose.sx * c, b = pose.sx * s, d = -pose.sy * s, e = pose.sy * c;
    return {{{a, b, 0.0},
             {d, e, 0.0},
             {anchor.x + pose.x - (anchor.x * a + anchor.y * d),
              anchor.y + pose.y - (anchor.x * b + anchor.y * e), 1.0}}};
}

std::vector<Key> KeysOf(const std::string& text, const Pose& still) {
    std::vector<Key> keys;
    Pose pose = still;
    for (const std::string& part : Parts(text, ';')) {
        if (Trimmed(part).empty()) continue;
        const size_t colon = part.find(':');
        if (colon == std::string::npos)
            Misuse("--motion: '" + OneLine(Trimmed(part)) + "': TIME:NAME=VALUE,... is wanted");
        const double time = Number("--motion: time", Trimmed(part.substr(0, colon)), -1e6, 1e6);
        if (!keys.empty() && time <= keys.back().time) Misuse("--motion: the times of the keys must rise");
        const std::string settings = Trimmed(part.substr(colon + 1));
        if (!settings.empty()) {
            for (const std::string& setting : Parts(settings, ',')) ReadSetting(setting, pose);
        }
        keys.push_back({time, pose});
    }
    if (keys.size() < 2) Misuse("--motion: at least two keys are wanted");
    return keys;
}

Pose PoseAt(const std::vector<Key>& keys, double time) {
    size_t next = 0;
    while (next < keys.size() && keys[next].time <= time) ++next;
    if (next == 0) return keys.front().pose;
    if (next == keys.size()) return keys.back().pose;
    const Key &a = keys[next - 1], &b = keys[next];
    const double part = (time - a.time) / (b.time - a.time);
    const auto between = [part](double from, double to) { return from + (to - from) * part; };
    return {between(a.pose.rotate, b.pose.rotate), between(a.pose.sx, b.pose.sx),
            between(a.pose.sy, b.pose.sy), between(a.pose.x, b.pose.x), between(a.pose.y, b.pose.y)};
}

std::vector<GEO_Matrix3> MotionOf(const std::vector<Key>& keys, double open, int samples,
                                  GEO_Vector2T<double> anchor) {
    std::vector<GEO_Matrix3> series;
    for (int i = 0; i < samples; ++i)
        series.push_back(MatrixOf(PoseAt(keys, open * i / (samples - 1)), anchor));
    // The library takes a series whose ends agree for a still picture. A motion that comes back to where it
    // began is therefore told in another order, which its mean does not depend on.
    constexpr double kSame = 1e-12;
    if (GEO_EqualMatrixWithinEpsilon(&series.front(), &series.back(), kSame)) {
        for (GEO_Matrix3& matrix : series) {
            if (GEO_EqualMatrixWithinEpsilon(&matrix, &series.front(), kSame)) continue;
            std::swap(matrix, series.back());
            break;
        }
    }
    return series;
}
