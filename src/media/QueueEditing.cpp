#include "QueueEditing.h"

#include "MediaTypes.h"
#include "core/Logger.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace tb {

const QStringList& sortOptions()
{
    static const QStringList options{QStringLiteral("-"), QStringLiteral("Created Ascending ↑"),
                                     QStringLiteral("Created Descending ↓"), QStringLiteral("Filename Ascending ↑"),
                                     QStringLiteral("Filename Descending ↓")};
    return options;
}

QCollator fileNameCollator()
{
    // The C locale has no collation rules (no numeric mode either): compare as English then.
    QCollator collator(QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

void sortImages(QList<IdentifiableImage>& images, const QString& option)
{
    const int which = int(sortOptions().indexOf(option));
    if (which <= 0)
        return;

    // Sort keys once per item: comparing through the collator 20,000 × log(20,000) times would
    // cost far more than making 20,000 keys.
    struct Keyed {
        IdentifiableImage item;
        QCollatorSortKey name;
        qint64 created;
    };
    const QCollator collator = fileNameCollator();
    const bool byName = which >= 3;
    std::vector<Keyed> keyed;
    keyed.reserve(size_t(images.size()));
    for (const IdentifiableImage& item : images) {
        const qint64 created = item.creationDate() ? item.creationDate()->toMSecsSinceEpoch()
                                                   : std::numeric_limits<qint64>::min(); // the distant past
        keyed.push_back(Keyed{item, collator.sortKey(byName ? item.url().toLocalFile() : QString()), created});
    }
    auto less = [which](const Keyed& a, const Keyed& b) {
        switch (which) {
        case 1:
            return a.created < b.created;
        case 2:
            return b.created < a.created;
        case 3:
            return a.name.compare(b.name) < 0;
        default:
            return b.name.compare(a.name) < 0;
        }
    };
    std::stable_sort(keyed.begin(), keyed.end(), less);
    for (qsizetype i = 0; i < images.size(); ++i)
        images[i] = std::move(keyed[size_t(i)].item);
}

bool reconcileWithFolder(Queue& queue, const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists() || !QFileInfo(folder).isReadable()) {
        logError(QStringLiteral("Error syncing ContentView images with folder: ") +
                 QStringLiteral("The folder “%1” couldn’t be opened.").arg(QFileInfo(folder).fileName()));
        return false;
    }
    QSet<QString> listed;
    for (const QFileInfo& entry :
         dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort))
        if (isSupportedExtension(entry.suffix()))
            listed.insert(QDir::cleanPath(entry.absoluteFilePath()));
    queue.removeIf([&listed](const IdentifiableImage& item) {
        return !listed.contains(QDir::cleanPath(item.url().toLocalFile()));
    });
    return true;
}

} // namespace tb
