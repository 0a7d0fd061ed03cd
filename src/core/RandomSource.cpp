#include "RandomSource.h"

namespace tb {

__extension__ typedef unsigned __int128 Uint128; // a GCC and Clang extension

std::uint64_t RandomSource::bounded(std::uint64_t bound)
{
    if (bound == 0)
        return 0;
    Uint128 product = Uint128(next64()) * bound;
    auto low = std::uint64_t(product);
    if (low < bound) {
        // 2^64 mod bound: the number of low values that would bias the result.
        const std::uint64_t threshold = (0 - bound) % bound;
        while (low < threshold) {
            product = Uint128(next64()) * bound;
            low = std::uint64_t(product);
        }
    }
    return std::uint64_t(product >> 64);
}

double RandomSource::unit() { return double(next64() >> 11) * 0x1.0p-53; }

// securelySeeded() draws the seed from the operating system's entropy source once; drawing every
// number from it would be needlessly slow for shuffles of tens of thousands of items.
SystemRandomSource::SystemRandomSource() : generator(QRandomGenerator64::securelySeeded()) {}

} // namespace tb
