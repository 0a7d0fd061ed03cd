#include "FrameKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
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

// BT.709 in video range, scaled by 2^15: luma from one pixel, chroma from the sum of four (hence
// the 2^17 below). Each chroma row sums to 0, so grey stays at 128.
constexpr int lumaR = 5983, lumaG = 20127, lumaB = 2032;    // 0.2126, 0.7152, 0.0722 of 219/255
constexpr int blueR = -3299, blueG = -11093, blueB = 14392; // −0.1146, −0.3854, 0.5 of 224/255
constexpr int redR = 14392, redG = -13074, redB = -1318;    // 0.5, −0.4542, −0.0458 of 224/255
constexpr int lumaOffset = (16 << 15) + (1 << 14);
constexpr int chromaOffset = (128 << 17) + (1 << 16);

inline std::uint8_t lumaOf(std::uint32_t p)
{
    return std::uint8_t(
        (lumaR * int((p >> 16) & 0xFF) + lumaG * int((p >> 8) & 0xFF) + lumaB * int(p & 0xFF) + lumaOffset) >> 15);
}

// One row pair: luma for both rows, and chroma for the row pair's blocks. `below` is `above` for
// the last row of a picture of odd height.
void yuvRows(const std::uint32_t* above, const std::uint32_t* below, int width, std::uint8_t* lumaAbove,
             std::uint8_t* lumaBelow, std::uint8_t* blue, std::uint8_t* red)
{
    int x = 0;
#if defined(__SSE2__)
    const __m128i byteMask = _mm_set1_epi32(0xFF);
    const __m128i zero = _mm_setzero_si128();
    const __m128i ones = _mm_set1_epi16(1);
    // Two 16-bit weights in each 32-bit lane, as _mm_madd_epi16 pairs them with (r, g) or (b, 0).
    const auto weights = [](int first, int second) {
        return _mm_set1_epi32(int(std::uint32_t(std::uint16_t(first)) | std::uint32_t(std::uint16_t(second)) << 16));
    };
    const __m128i lumaRG = weights(lumaR, lumaG), lumaB0 = weights(lumaB, 0);
    const __m128i blueRG = weights(blueR, blueG), blueB0 = weights(blueB, 0);
    const __m128i redRG = weights(redR, redG), redB0 = weights(redB, 0);
    const __m128i lumaAdd = _mm_set1_epi32(lumaOffset);
    const __m128i chromaAdd = _mm_set1_epi32(chromaOffset);
    // Eight pixels' channel as eight 16-bit lanes.
    const auto channel = [&](__m128i low, __m128i high, int shift) {
        return _mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(low, shift), byteMask),
                               _mm_and_si128(_mm_srli_epi32(high, shift), byteMask));
    };
    // k_r·r + k_g·g + k_b·b + offset for four pixels (or blocks) in 32-bit lanes; r, g and b in the
    // low or high halves of 16-bit vectors, picked by `pick`.
    const auto weigh = [&](__m128i r, __m128i g, __m128i b, __m128i rg, __m128i b0, __m128i offset, auto pick) {
        return _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(pick(r, g), rg), _mm_madd_epi16(pick(b, zero), b0)), offset);
    };
    const auto low = [](__m128i a, __m128i b) { return _mm_unpacklo_epi16(a, b); };
    const auto high = [](__m128i a, __m128i b) { return _mm_unpackhi_epi16(a, b); };
    const auto luma = [&](__m128i r, __m128i g, __m128i b, std::uint8_t* out) {
        const __m128i first = _mm_srai_epi32(weigh(r, g, b, lumaRG, lumaB0, lumaAdd, low), 15);
        const __m128i second = _mm_srai_epi32(weigh(r, g, b, lumaRG, lumaB0, lumaAdd, high), 15);
        const __m128i words = _mm_packs_epi32(first, second);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(words, words));
    };
    const auto store4 = [](__m128i values, std::uint8_t* out) {
        const __m128i words = _mm_packs_epi32(values, values);
        const int bytes = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
        std::memcpy(out, &bytes, 4);
    };
    for (; x + 8 <= width; x += 8) {
        const __m128i a0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(above + x));
        const __m128i a1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(above + x + 4));
        const __m128i b0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(below + x));
        const __m128i b1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(below + x + 4));
        const __m128i ra = channel(a0, a1, 16), ga = channel(a0, a1, 8), ba = channel(a0, a1, 0);
        const __m128i rb = channel(b0, b1, 16), gb = channel(b0, b1, 8), bb = channel(b0, b1, 0);
        luma(ra, ga, ba, lumaAbove + x);
        luma(rb, gb, bb, lumaBelow + x);
        // Sums of each 2×2 block: the rows added, then neighbouring columns; four blocks, at most
        // 1020 each, back in the low half of 16-bit vectors.
        const auto blocks = [&](__m128i upper, __m128i lower) {
            return _mm_packs_epi32(_mm_madd_epi16(_mm_add_epi16(upper, lower), ones), zero);
        };
        const __m128i r = blocks(ra, rb), g = blocks(ga, gb), b = blocks(ba, bb);
        store4(_mm_srai_epi32(weigh(r, g, b, blueRG, blueB0, chromaAdd, low), 17), blue + x / 2);
        store4(_mm_srai_epi32(weigh(r, g, b, redRG, redB0, chromaAdd, low), 17), red + x / 2);
    }
#endif
    for (; x < width; x += 2) {
        const int right = std::min(x + 1, width - 1);
        lumaAbove[x] = lumaOf(above[x]);
        lumaBelow[x] = lumaOf(below[x]);
        if (right != x) {
            lumaAbove[right] = lumaOf(above[right]);
            lumaBelow[right] = lumaOf(below[right]);
        }
        const auto sum = [&](int shift) {
            return int((above[x] >> shift) & 0xFF) + int((above[right] >> shift) & 0xFF) +
                   int((below[x] >> shift) & 0xFF) + int((below[right] >> shift) & 0xFF);
        };
        const int r = sum(16), g = sum(8), b = sum(0);
        blue[x / 2] = std::uint8_t((blueR * r + blueG * g + blueB * b + chromaOffset) >> 17);
        red[x / 2] = std::uint8_t((redR * r + redG * g + redB * b + chromaOffset) >> 17);
    }
}

} // namespace

void toYuv420(const QImage& picture, std::uint8_t* const planes[3], const int strides[3])
{
    const int width = picture.width();
    const int height = picture.height();
    for (int y = 0; y < height; y += 2) {
        const int next = std::min(y + 1, height - 1);
        // An odd last row is its own pair; its luma is written twice to the same place.
        yuvRows(reinterpret_cast<const std::uint32_t*>(picture.constScanLine(y)),
                reinterpret_cast<const std::uint32_t*>(picture.constScanLine(next)), width,
                planes[0] + std::ptrdiff_t(y) * strides[0], planes[0] + std::ptrdiff_t(next) * strides[0],
                planes[1] + std::ptrdiff_t(y / 2) * strides[1], planes[2] + std::ptrdiff_t(y / 2) * strides[2]);
    }
}

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
