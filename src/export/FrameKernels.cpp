#include "FrameKernels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace tb::FrameKernels {

namespace {

constexpr std::uint32_t lowLanes = 0x00FF00FFu;

// Mixes two pixels with weight w of 256 for b, two channels per lane.
inline std::uint32_t mix(std::uint32_t a, std::uint32_t b, std::uint32_t w)
{
    const std::uint32_t v = 256 - w;
    const std::uint32_t rb = (((a & lowLanes) * v + (b & lowLanes) * w) >> 8) & lowLanes;
    const std::uint32_t ag = ((((a >> 8) & lowLanes) * v + ((b >> 8) & lowLanes) * w)) & ~lowLanes;
    return rb | ag;
}

std::uint32_t fixedWeight(double weight) { return std::uint32_t(std::lround(std::clamp(weight, 0.0, 1.0) * 256.0)); }

// Where each output column (or row) samples the source: the two neighbours and the weight of
// the second, for a source coordinate of `scale`d output centres.
struct Taps {
    std::vector<int> first;
    std::vector<int> second;
    std::vector<std::uint32_t> weight;

    Taps(int count, int sourceCount, double centre, double scale, double shift)
    {
        first.resize(size_t(count));
        second.resize(size_t(count));
        weight.resize(size_t(count));
        const double last = sourceCount - 1;
        for (int i = 0; i < count; ++i) {
            // The output pixel's centre, taken back through the zoom and the move.
            const double u = std::clamp((i + 0.5 - centre) / scale + centre - shift - 0.5, 0.0, last);
            const int x0 = int(u);
            first[size_t(i)] = x0;
            second[size_t(i)] = std::min(x0 + 1, sourceCount - 1);
            weight[size_t(i)] = std::uint32_t(std::lround((u - x0) * 256.0));
        }
    }
};

} // namespace

void blend(const QImage& from, const QImage& to, double weight, QImage& out)
{
    const std::uint32_t w = fixedWeight(weight);
    const int width = out.width();
    for (int y = 0; y < out.height(); ++y) {
        const auto* a = reinterpret_cast<const std::uint32_t*>(from.constScanLine(y));
        const auto* b = reinterpret_cast<const std::uint32_t*>(to.constScanLine(y));
        auto* o = reinterpret_cast<std::uint32_t*>(out.scanLine(y));
        for (int x = 0; x < width; ++x)
            o[x] = mix(a[x], b[x], w);
    }
}

void zoomAndShift(const QImage& source, double scale, QPointF shift, QImage& out)
{
    const int width = out.width();
    const int height = out.height();
    // A positive y moves the picture up, so a row samples further down the source.
    const Taps columns(width, source.width(), width / 2.0, scale, shift.x());
    const Taps rows(height, source.height(), height / 2.0, scale, -shift.y());
    for (int y = 0; y < height; ++y) {
        const auto* top = reinterpret_cast<const std::uint32_t*>(source.constScanLine(rows.first[size_t(y)]));
        const auto* bottom = reinterpret_cast<const std::uint32_t*>(source.constScanLine(rows.second[size_t(y)]));
        const std::uint32_t wy = rows.weight[size_t(y)];
        auto* o = reinterpret_cast<std::uint32_t*>(out.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int x0 = columns.first[size_t(x)];
            const int x1 = columns.second[size_t(x)];
            const std::uint32_t wx = columns.weight[size_t(x)];
            o[x] = mix(mix(top[x0], top[x1], wx), mix(bottom[x0], bottom[x1], wx), wy);
        }
    }
}

} // namespace tb::FrameKernels
