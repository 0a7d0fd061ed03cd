#include "QueueView.h"

#include "QueueModel.h"
#include "core/SettingsStore.h"
#include "media/Queue.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QStyledItemDelegate>

namespace tb {

namespace {

constexpr int cellSide = QueueModel::cellSide;

class CellDelegate final : public QStyledItemDelegate {
public:
    CellDelegate(SettingsStore& settings, QObject* parent) : QStyledItemDelegate(parent), settings(settings) {}

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        return QSize(cellSide + 10, cellSide + (showNames() ? 28 : 10));
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QRect cell = option.rect.adjusted(5, 5, -5, -5);
        const QRect frame(cell.topLeft(), QSize(cellSide, cellSide));
        const QPixmap thumbnail = index.data(Qt::DecorationRole).value<QPixmap>();
        if (!thumbnail.isNull()) {
            const QSize fitted = thumbnail.size().scaled(frame.size(), Qt::KeepAspectRatio);
            const QRect target(frame.center() - QPoint(fitted.width() / 2, fitted.height() / 2), fitted);
            painter->drawPixmap(target, thumbnail);
        } else {
            painter->fillRect(frame.adjusted(2, 2, -2, -2), option.palette.alternateBase());
        }
        const bool selected = index.data(QueueModel::IsSelectedRole).toBool();
        painter->setPen(QPen(selected ? QColor(Qt::blue) : QColor(128, 128, 128, 77), selected ? 3 : 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(frame, 8, 8);
        auto badge = [painter](QPoint centre, QColor colour, const QString& glyph) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(Qt::white);
            painter->drawEllipse(centre, 11, 11);
            painter->setBrush(colour);
            painter->drawEllipse(centre, 9, 9);
            painter->setPen(Qt::white);
            painter->drawText(QRect(centre - QPoint(9, 9), QSize(18, 18)), Qt::AlignCenter, glyph);
        };
        if (selected)
            badge(frame.topRight() + QPoint(-14, 14), Qt::blue, QStringLiteral("✓"));
        if (index.data(QueueModel::IsStartRole).toBool())
            badge(frame.topLeft() + QPoint(14, 14), QColor(255, 149, 0), QStringLiteral("⚑"));
        if (index.data(QueueModel::IsVideoRole).toBool())
            badge(frame.bottomLeft() + QPoint(14, -14), QColor(60, 60, 60), QStringLiteral("▶"));
        if (showNames()) {
            painter->setPen(option.palette.color(QPalette::Text));
            const QRect text(cell.left(), frame.bottom() + 2, cellSide, 20);
            painter->drawText(text, Qt::AlignHCenter | Qt::AlignVCenter,
                              option.fontMetrics.elidedText(index.data().toString(), Qt::ElideMiddle, cellSide));
        }
        painter->restore();
    }

private:
    bool showNames() const { return settings.value(Settings::showFilenamesInThumbnails); }
    SettingsStore& settings;
};

} // namespace

QueueView::QueueView(QueueModel& model, SettingsStore& settings, QWidget* parent)
    : QListView(parent), queue(model), settings(settings)
{
    setModel(&model);
    setItemDelegate(new CellDelegate(settings, this));
    setViewMode(QListView::IconMode);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    // Uniform cells and batched layout keep 20,000 items as cheap as 20.
    setUniformItemSizes(true);
    setLayoutMode(QListView::Batched);
    setBatchSize(500);
    setSelectionMode(QAbstractItemView::NoSelection);
    // Drops reach an item view through its viewport.
    viewport()->setAcceptDrops(true);
    setSpacing(2);
    setAccessibleName(QStringLiteral("Queue"));
    updateGrid();
    connect(&settings, &SettingsStore::changed, this, [this](const QString& key) {
        if (key == QLatin1String(Settings::showFilenamesInThumbnails.name))
            updateGrid();
    });
}

void QueueView::updateGrid()
{
    const bool names = settings.value(Settings::showFilenamesInThumbnails);
    setGridSize(QSize(cellSide + 10, cellSide + (names ? 28 : 10)));
    viewport()->update();
}

void QueueView::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (!index.isValid() || event->button() != Qt::LeftButton) {
        QListView::mousePressEvent(event);
        return;
    }
    pressed = index;
    pressPosition = event->position().toPoint();
    const auto modifiers = event->modifiers();
    queue.queue().click(index.data(QueueModel::ItemIdRole).toUuid(), modifiers & Qt::ShiftModifier,
                        modifiers & Qt::ControlModifier);
}

// Dragging a cell carries its id as text; dropping it on another cell moves it there.
void QueueView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton) || !pressed.isValid() ||
        (event->position().toPoint() - pressPosition).manhattanLength() < QApplication::startDragDistance())
        return;
    auto* drag = new QDrag(this);
    auto* mime = new QMimeData;
    mime->setText(pressed.data(QueueModel::ItemIdRole).toUuid().toString(QUuid::WithoutBraces));
    drag->setMimeData(mime);
    drag->setPixmap(pressed.data(Qt::DecorationRole).value<QPixmap>().scaled(64, 64, Qt::KeepAspectRatio));
    pressed = QPersistentModelIndex();
    drag->exec(Qt::MoveAction);
}

void QueueView::dragEnterEvent(QDragEnterEvent* event)
{
    // Files from outside go to the main window's intake.
    if (event->mimeData()->hasText() && !event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void QueueView::dragMoveEvent(QDragMoveEvent* event)
{
    if (event->mimeData()->hasText() && !event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void QueueView::dropEvent(QDropEvent* event)
{
    const QUuid dragged = QUuid::fromString(event->mimeData()->text().trimmed());
    const QModelIndex target = indexAt(event->position().toPoint());
    if (dragged.isNull() || !target.isValid() || event->mimeData()->hasUrls()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    queue.queue().move(dragged, target.data(QueueModel::ItemIdRole).toUuid());
}

void QueueView::contextMenuEvent(QContextMenuEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid())
        return;
    const QUuid id = index.data(QueueModel::ItemIdRole).toUuid();
    QMenu menu(this);
    Queue& items = queue.queue();
    if (items.startingImageId() == id)
        menu.addAction(QStringLiteral("Clear Starting Point"), this, [&items] { items.setStartingImageId({}); });
    else
        menu.addAction(QStringLiteral("Start Slideshow Here"), this, [&items, id] { items.setStartingImageId(id); });
    const bool names = settings.value(Settings::showFilenamesInThumbnails);
    menu.addAction(names ? QStringLiteral("Hide Filenames") : QStringLiteral("Show Filenames"), this,
                   [this, names] { settings.set(Settings::showFilenamesInThumbnails, !names); });
    menu.exec(event->globalPos());
}

} // namespace tb
