#pragma once

#include <QMap>
#include <QString>

namespace tb {

using Segmentation = QMap<QString, QString>;

// Usage reporting as the rest of the program sees it. Recording never fails and never blocks.
class Analytics {
public:
    virtual ~Analytics() = default;
    virtual void recordEvent(const QString& key, const Segmentation& segmentation = {}, int count = 1) = 0;
    virtual void beginSession() = 0;
    virtual void endSession() = 0;
};

} // namespace tb
