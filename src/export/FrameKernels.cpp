#include "FrameKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tb::FrameKernels {

namespace {

constexpr std::uint32_t lowLanes = 0x00FF00FFu;

// Mixes two pixels with weight w of 256 for b: each channel (a·(256 − w) + b·w) / 256, rounded
// down. The vector paths below compute exactly this, so every path gives the same frame.
inline std::uint32_t mix(std::uint32_t a, std::uint32_t b, std::uint32_t w)
{
    const std::uint32_t v = 256 - w;
    const std::uint32_t rb = (((a & lowLanes) * v + (b & lowLanes) * w) >> 8) & lowLanes;
    const std::uint32_t ag = ((((a >> 8) & lowLanes) * v + ((b >> 8) & lowLanes) * w)) & ~lowLanes;
    return rb | ag;
}

std::uint32_t fixedWeight(double weight) { return std::uint32_t(std::lround(std::clamp(weight, 0.0, 1.0) * 256.0)); }

// out[x] = mix(a[x], b[x], w) for `count` pixels.
void mixRow(const std::uint32_t* a, const std::uint32_t* b, std::uint32_t w, std::uint32_t* out, int count)
{
    int x = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i weightB = _mm_set1_epi16(short(w));
    const __m128i weightA = _mm_set1_epi16(short(256 - w));
    const auto half = [&](__m128i pa, __m128i pb) {
        return _mm_srli_epi16(_mm_add_epi16(_mm_mullo_epi16(pa, weightA), _mm_mullo_epi16(pb, weightB)), 8);
    };
    for (; x + 4 <= count; x += 4) {
        const __m128i pa = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + x));
        const __m128i pb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + x));
        const __m128i low = half(_mm_unpacklo_epi8(pa, zero), _mm_unpacklo_epi8(pb, zero));
        const __m128i high = half(_mm_unpackhi_epi8(pa, zero), _mm_unpackhi_epi8(pb, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_packus_epi16(low, high));
    }
#endif
    for (; x < count; ++x)
        out[x] = mix(a[x], b[x], w);
}

// Where each output column (or row) samples the source: the left (or upper) neighbour and the
// weight of the one after it, for output centres taken back through the zoom and the move.
struct Taps {
    std::vector<int> first;
    std::vector<std::uint16_t> weight;
    // Per column, the weights as the vector path multiplies them: four lanes of 256 − w, then
    // four of w.
    std::vector<std::array<std::uint16_t, 8>> lanes;

    Taps(int count, int sourceCount, double centre, double scale, double shift, bool withLanes = false)
        : first(size_t(count)), weight(size_t(count))
    {
        const double last = sourceCount - 1;
        for (int i = 0; i < count; ++i) {
            const double u = std::clamp((i + 0.5 - centre) / scale + centre - shift - 0.5, 0.0, last);
            const int x0 = int(u);
            first[size_t(i)] = x0;
            weight[size_t(i)] = std::uint16_t(std::lround((u - x0) * 256.0));
        }
        if (withLanes)
            for (const std::uint16_t w : weight) {
                const auto v = std::uint16_t(256 - w);
                lanes.push_back({v, v, v, v, w, w, w, w});
            }
    }
};

// out[i] = mix(line[first[i]], line[first[i] + 1], weight[i]); `line` holds one pixel past the
// source's last, so the right neighbour of the last column can be read (its weight is 0).
void sampleRow(const std::uint32_t* line, const Taps& columns, std::uint32_t* out, int count)
{
    int i = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    // Two output pixels: each one's pair of neighbours weighted, and the pairs' halves added.
    const auto pair = [&](int at) {
        const auto neighbours = [&](int column) {
            const __m128i two = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(line + columns.first[size_t(column)]));
            const __m128i weights =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(columns.lanes[size_t(column)].data()));
            return _mm_mullo_epi16(_mm_unpacklo_epi8(two, zero), weights);
        };
        const __m128i a = neighbours(at);
        const __m128i b = neighbours(at + 1);
        return _mm_srli_epi16(_mm_add_epi16(_mm_unpacklo_epi64(a, b), _mm_unpackhi_epi64(a, b)), 8);
    };
    for (; i + 4 <= count; i += 4)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(pair(i), pair(i + 2)));
#endif
    for (; i < count; ++i) {
        const int x0 = columns.first[size_t(i)];
        out[i] = mix(line[x0], line[x0 + 1], columns.weight[size_t(i)]);
    }
}

} // namespace

void blend(const QImage& from, const QImage& to, double weight, QImage& out)
{
    const std::uint32_t w = fixedWeight(weight);
    for (int y = 0; y < out.height(); ++y)
        mixRow(reinterpret_cast<const std::uint32_t*>(from.constScanLine(y)),
               reinterpret_cast<const std::uint32_t*>(to.constScanLine(y)), w,
               reinterpret_cast<std::uint32_t*>(out.scanLine(y)), out.width());
}

void zoomAndShift(const QImage& source, double scale, QPointF shift, QImage& out)
{
    const int width = out.width();
    const int height = out.height();
    const int sourceWidth = source.width();
    const int lastRow = source.height() - 1;
    // A positive y moves the picture up, so a row samples further down the source.
    const Taps columns(width, sourceWidth, width / 2.0, scale, shift.x(), true);
    const Taps rows(height, source.height(), height / 2.0, scale, -shift.y());
    // Rows first: the two source rows mixed into one line, which the columns then sample.
    std::vector<std::uint32_t> line(size_t(sourceWidth) + 1);
    for (int y = 0; y < height; ++y) {
        const int y0 = rows.first[size_t(y)];
        mixRow(reinterpret_cast<const std::uint32_t*>(source.constScanLine(y0)),
               reinterpret_cast<const std::uint32_t*>(source.constScanLine(std::min(y0 + 1, lastRow))),
               rows.weight[size_t(y)], line.data(), sourceWidth);
        line[size_t(sourceWidth)] = line[size_t(sourceWidth) - 1];
        sampleRow(line.data(), columns, reinterpret_cast<std::uint32_t*>(out.scanLine(y)), width);
    }
}

} // namespace tb::FrameKernels
