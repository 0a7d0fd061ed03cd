#pragma once

#include "IdentifiableImage.h"
#include "Queue.h"

#include <QCollator>
#include <QList>
#include <QStringList>

namespace tb {

// The sort picker's entries, "-" (leave the order) first.
const QStringList& sortOptions();

// The file browser's order of names: digits compare as numbers (Image9 before Image10) and case
// is ignored. Not to be shared between threads.
QCollator fileNameCollator();

// Sorts the whole queue, stably, by the picker's option: file names by the full path in the
// file browser's order (digits compare as numbers, so Image9 comes before Image10, and items of
// one folder stay together), or creation dates with a missing date as the distant past. "-" and
// unknown options leave the queue as it is.
void sortImages(QList<IdentifiableImage>& images, const QString& option);

// Keeps only the items whose file is still a supported file directly in the folder (items from
// anywhere else go too; the starting point goes with its item). An unreadable folder logs an
// error and changes nothing; the result says whether the folder could be listed.
bool reconcileWithFolder(Queue& queue, const QString& folder);

} // namespace tb
