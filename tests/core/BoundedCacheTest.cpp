#include "core/BoundedCache.h"

#include <QString>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace tb;

TEST(BoundedCache, EvictsTheLeastRecentlyUsedBeyondTheCountLimit)
{
    BoundedCache<QString, int> cache(3);
    cache.insert(QStringLiteral("a"), 1);
    cache.insert(QStringLiteral("b"), 2);
    cache.insert(QStringLiteral("c"), 3);
    EXPECT_EQ(cache.object(QStringLiteral("a")), 1); // a is now the most recent
    cache.insert(QStringLiteral("d"), 4);

    EXPECT_FALSE(cache.contains(QStringLiteral("b")));
    EXPECT_TRUE(cache.contains(QStringLiteral("a")));
    EXPECT_EQ(cache.count(), 3);
    EXPECT_EQ(cache.object(QStringLiteral("b")), std::nullopt);

    cache.setCountLimit(1);
    EXPECT_EQ(cache.count(), 1);
    EXPECT_TRUE(cache.contains(QStringLiteral("d")));
}

TEST(BoundedCache, EvictsByTotalCostAndRefusesAnEntryBiggerThanTheLimit)
{
    BoundedCache<int, QString> cache(0, 100);
    cache.insert(1, QStringLiteral("one"), 40);
    cache.insert(2, QStringLiteral("two"), 40);
    cache.insert(3, QStringLiteral("three"), 40);
    EXPECT_FALSE(cache.contains(1));
    EXPECT_EQ(cache.totalCost(), 80);

    // Replacing an entry replaces its cost.
    cache.insert(2, QStringLiteral("two again"), 10);
    EXPECT_EQ(cache.totalCost(), 50);
    EXPECT_EQ(cache.object(2), QStringLiteral("two again"));

    EXPECT_FALSE(cache.insert(3, QStringLiteral("huge"), 101));
    EXPECT_EQ(cache.object(3), QStringLiteral("three")) << "a refused entry replaces nothing";

    cache.remove(3);
    EXPECT_EQ(cache.totalCost(), 10);
    cache.removeAll();
    EXPECT_EQ(cache.count(), 0);
    EXPECT_EQ(cache.totalCost(), 0);
    EXPECT_TRUE(cache.insert(4, QStringLiteral("after clear"), 100));
}

TEST(BoundedCache, StaysWithinItsLimitsUnderConcurrentUse)
{
    BoundedCache<int, int> cache(50, 400);
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&cache, t] {
            for (int i = 0; i < 5000; ++i) {
                const int key = (t * 7919 + i) % 200;
                if (i % 3 == 0)
                    cache.object(key);
                else if (i % 97 == 0)
                    cache.remove(key);
                else
                    cache.insert(key, i, key % 16);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_LE(cache.count(), 50);
    EXPECT_LE(cache.totalCost(), 400);
    // Every entry of a key costs key % 16, so the books must match what is left.
    qint64 expected = 0;
    qsizetype present = 0;
    for (int key = 0; key < 200; ++key) {
        if (cache.contains(key)) {
            expected += key % 16;
            ++present;
        }
    }
    EXPECT_EQ(cache.totalCost(), expected);
    EXPECT_EQ(cache.count(), present);
}
