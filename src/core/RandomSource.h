#pragma once

#include <QRandomGenerator64>

#include <cstdint>
#include <utility>

namespace tb {

// The one source of randomness of the program (shuffles, Ken Burns motion). The system source
// is seeded from the operating system; tests swap in a seeded or scripted one.
class RandomSource {
public:
    virtual ~RandomSource() = default;
    virtual std::uint64_t next64() = 0;

    // Uniform in [0, bound) without modulo bias: Lemire's multiply-and-shift, redrawing when the
    // low half of the product falls in the short range that would over-represent some results.
    // A bound of 0 gives 0.
    std::uint64_t bounded(std::uint64_t bound);
    // Uniform in [0, 1) with 53 random bits.
    double unit();

    // Fisher–Yates: every permutation equally likely, given an unbiased bounded().
    template <typename Container> void shuffle(Container& items)
    {
        for (auto i = std::uint64_t(items.size()); i > 1; --i) {
            const auto j = bounded(i);
            using std::swap;
            swap(items[qsizetype(i - 1)], items[qsizetype(j)]);
        }
    }
};

class SystemRandomSource final : public RandomSource {
public:
    SystemRandomSource();
    std::uint64_t next64() override { return generator.generate64(); }

private:
    QRandomGenerator64 generator;
};

} // namespace tb
