#pragma once

#include <QImage>
#include <QPointF>

#include <cstdint>

namespace tb {

// The pixel work of a movie's frames, on 32-bit BGRA pictures of the output size (as QImage
// keeps Format_ARGB32 and Format_ARGB32_Premultiplied in memory on little-endian machines).
// All work in fixed point on sixteen-bit lanes (SSE2, with a plain loop that gives the same bytes
// elsewhere): a 1080p Ken Burns frame costs about 5 ms on one core, and its conversion for the
// encoder about 1.5 ms, a fifth of what libswscale takes for the same.
namespace FrameKernels {

// `to` laid over `from` with `weight` (0 to 1): 0 gives `from` and 1 gives `to`, exactly. All three
// pictures have one size; `out` may be either input.
void blend(const QImage& from, const QImage& to, double weight, QImage& out);

// `source` zoomed by `scale` about the centre of the frame and then moved by `shift` pixels,
// sampled bilinearly into `out` (which has the source's size). The move is zoomed with the
// picture, and a positive y moves it up. Samples beyond the source's edge take the edge's
// pixels: nothing is read outside the source. The movie only zooms and moves, never turns, so
// the sampling takes a separable form: one table of columns and one of rows per frame.
void zoomAndShift(const QImage& source, double scale, QPointF shift, QImage& out);

// The picture as the movie stores it: BT.709 luma and chroma in video range (16–235, 16–240), the
// chroma of each 2×2 block of pixels from their average; the alpha byte is not looked at. Fixed
// point with 15-bit weights, exact to the nearest level but for ties, and the same bytes on every
// path. The planes are the picture's size and half of it, rounded up.
void toYuv420(const QImage& picture, std::uint8_t* const planes[3], const int strides[3]);

} // namespace FrameKernels

} // namespace tb
