#pragma once

#include "IdentifiableImage.h"

#include <QList>
#include <QSet>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace tb {

// The sort picker's entries, "-" (leave the order) first.
const QStringList& sortOptions();

// Sorts the whole queue, stably, by the picker's option: file names by the full path in the
// file browser's order (digits compare as numbers, so Image9 comes before Image10, and items of
// one folder stay together), or creation dates with a missing date as the distant past. "-" and
// unknown options leave the queue as it is.
void sortImages(QList<IdentifiableImage>& images, const QString& option);

// Removes the items with these ids; clears the starting point if its item goes.
void removeSelected(QList<IdentifiableImage>& images, const QSet<QUuid>& ids, std::optional<QUuid>& startingImageId);

// Keeps only the items whose file is still a supported file directly in the folder (items from
// anywhere else go too) and clears the starting point if its item went. An unreadable folder
// logs an error and changes nothing; the result says whether the folder could be listed.
bool reconcileWithFolder(QList<IdentifiableImage>& images, const QString& folder,
                         std::optional<QUuid>& startingImageId);

} // namespace tb
