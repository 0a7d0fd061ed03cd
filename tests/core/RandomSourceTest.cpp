#include "core/RandomSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <numeric>
#include <random>
#include <vector>

using namespace tb;

namespace {

// Hands out the given numbers in order.
class ScriptedRandom final : public RandomSource {
public:
    explicit ScriptedRandom(std::deque<std::uint64_t> values) : values(std::move(values)) {}
    std::uint64_t next64() override
    {
        ++drawn;
        const auto v = values.front();
        values.pop_front();
        return v;
    }
    std::deque<std::uint64_t> values;
    int drawn = 0;
};

class SeededRandom final : public RandomSource {
public:
    explicit SeededRandom(std::uint64_t seed) : engine(seed) {}
    std::uint64_t next64() override { return engine(); }
    std::mt19937_64 engine;
};

} // namespace

TEST(RandomSource, BoundedRedrawsInTheBiasedRangeAndMapsByMultiplication)
{
    // For a bound of 3, 2^64 mod 3 = 1: a draw whose low product half is 0 would favour 0.
    ScriptedRandom source({0, std::uint64_t(1) << 63});
    EXPECT_EQ(source.bounded(3), 1u);
    EXPECT_EQ(source.drawn, 2);

    ScriptedRandom top({~std::uint64_t(0)});
    EXPECT_EQ(top.bounded(10), 9u) << "the largest draw maps to the largest result";

    ScriptedRandom unused({});
    EXPECT_EQ(unused.bounded(0), 0u);
    EXPECT_EQ(unused.drawn, 0);
}

TEST(RandomSource, UnitStaysInTheHalfOpenRange)
{
    ScriptedRandom source({0, ~std::uint64_t(0)});
    EXPECT_EQ(source.unit(), 0.0);
    const double high = source.unit();
    EXPECT_LT(high, 1.0);
    EXPECT_GT(high, 0.999999);
}

TEST(RandomSource, ShuffleIsAPermutationWithEveryOrderEquallyLikely)
{
    SeededRandom source(20261123);
    std::vector<int> big(1000);
    std::iota(big.begin(), big.end(), 0);
    auto shuffled = big;
    source.shuffle(shuffled);
    EXPECT_NE(shuffled, big);
    std::sort(shuffled.begin(), shuffled.end());
    EXPECT_EQ(shuffled, big);

    // Six orders of three items, 60,000 shuffles: each within 5 % of 10,000. The classic
    // "swap with any index" mistake skews some orders by about 20 %.
    std::map<std::vector<int>, int> seen;
    for (int i = 0; i < 60000; ++i) {
        std::vector<int> items{1, 2, 3};
        source.shuffle(items);
        ++seen[items];
    }
    ASSERT_EQ(seen.size(), 6u);
    for (const auto& [order, count] : seen)
        EXPECT_NEAR(count, 10000, 500);

    std::vector<int> empty;
    source.shuffle(empty);
    std::vector<int> one{7};
    source.shuffle(one);
    EXPECT_EQ(one, std::vector<int>{7});
}
