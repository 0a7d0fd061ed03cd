#pragma once

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <list>
#include <optional>
#include <utility>

namespace tb {

// A thread-safe cache bounded by item count and by total cost, evicting the least recently used
// entries first. A limit of 0 means no limit of that kind. Values are returned by copy, so V
// should be cheap to copy (implicitly shared Qt types, shared pointers).
template <typename K, typename V> class BoundedCache {
public:
    BoundedCache(qsizetype countLimit = 0, qint64 totalCostLimit = 0)
        : countLimitValue(countLimit), costLimitValue(totalCostLimit)
    {
    }
    BoundedCache(const BoundedCache&) = delete;
    BoundedCache& operator=(const BoundedCache&) = delete;

    // Stores value under key, replacing an earlier entry, then evicts down to the limits. An
    // entry that alone costs more than the total limit is not kept (and replaces nothing).
    bool insert(const K& key, V value, qint64 cost = 0)
    {
        QMutexLocker lock(&mutex);
        if (costLimitValue > 0 && cost > costLimitValue)
            return false;
        eraseLocked(key);
        order.push_front(Entry{key, std::move(value), cost});
        index.insert(key, order.begin());
        total += cost;
        trimLocked();
        return true;
    }

    // The cached value, marking it most recently used.
    std::optional<V> object(const K& key)
    {
        QMutexLocker lock(&mutex);
        auto it = index.find(key);
        if (it == index.end())
            return std::nullopt;
        order.splice(order.begin(), order, it.value());
        return it.value()->value;
    }

    bool contains(const K& key) const
    {
        QMutexLocker lock(&mutex);
        return index.contains(key);
    }

    void remove(const K& key)
    {
        QMutexLocker lock(&mutex);
        eraseLocked(key);
    }

    void removeAll()
    {
        QMutexLocker lock(&mutex);
        order.clear();
        index.clear();
        total = 0;
    }

    void setCountLimit(qsizetype limit)
    {
        QMutexLocker lock(&mutex);
        countLimitValue = limit;
        trimLocked();
    }

    void setTotalCostLimit(qint64 limit)
    {
        QMutexLocker lock(&mutex);
        costLimitValue = limit;
        trimLocked();
    }

    qsizetype count() const
    {
        QMutexLocker lock(&mutex);
        return index.size();
    }

    qint64 totalCost() const
    {
        QMutexLocker lock(&mutex);
        return total;
    }

private:
    struct Entry {
        K key;
        V value;
        qint64 cost;
    };
    using Order = std::list<Entry>;

    void eraseLocked(const K& key)
    {
        auto it = index.find(key);
        if (it == index.end())
            return;
        total -= it.value()->cost;
        order.erase(it.value());
        index.erase(it);
    }

    void trimLocked()
    {
        while (!order.empty() && ((countLimitValue > 0 && index.size() > countLimitValue) ||
                                  (costLimitValue > 0 && total > costLimitValue))) {
            const Entry& oldest = order.back();
            total -= oldest.cost;
            index.remove(oldest.key);
            order.pop_back();
        }
    }

    mutable QMutex mutex;
    qsizetype countLimitValue; // — guarded by mutex, as is everything below
    qint64 costLimitValue;
    qint64 total = 0;
    Order order; // most recently used first
    QHash<K, typename Order::iterator> index;
};

} // namespace tb
