#pragma once

#include "IdentifiableImage.h"

#include <QList>
#include <QSet>
#include <QUuid>

#include <optional>

namespace tb {

// The queue's selection and its anchor, with the click rules of the thumbnail grid: these are
// deliberately not the usual list-view rules.
struct QueueSelection {
    QSet<QUuid> selectedIds;
    std::optional<QUuid> lastSelectedId;

    // Shift with an anchor adds the whole span and keeps the anchor; Ctrl toggles one item
    // (anchoring on an added one); a plain click on a selected item clears everything, on an
    // unselected one selects it alone.
    void click(const QList<IdentifiableImage>& queue, const QUuid& clicked, bool shift, bool control);
};

// Moves the dragged item onto the target's place: removed, then inserted at the target's index
// of the shortened queue, so a forward drag lands just after the target and a backward one
// just before it. False when either is not in the queue.
bool moveItem(QList<IdentifiableImage>& queue, const QUuid& dragged, const QUuid& target);

} // namespace tb
