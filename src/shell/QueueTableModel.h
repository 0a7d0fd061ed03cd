#pragma once

#include "media/IdentifiableImage.h"

#include <QAbstractTableModel>
#include <QUuid>

#include <functional>
#include <optional>

namespace tb {

// The queue as a plain table (file name, created, folder): no thumbnails and no file access,
// so it stays fast with any number of items. It replaces the grid above 2000 items.
class QueueTableModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    QueueTableModel(QList<IdentifiableImage>& images, std::function<std::optional<QUuid>()> startingImageId,
                    QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void refresh();

private:
    QList<IdentifiableImage>& images;
    std::function<std::optional<QUuid>()> startingImageId;
};

} // namespace tb
