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
#include <QVariantAnimation>

namespace tb {

namespace {

constexpr int cellSide = QueueModel::cellSide;

class CellDelegate final : public QStyledItemDelegate {
public:
    CellDelegate(SettingsStore& settings, QueueView* view) : QStyledItemDelegate(view), settings(settings), view(view)
    {
    }

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        return QSize(cellSide + 10, cellSide + (showNames() ? 28 : 10));
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (view->isMoving(index))
            return; // the view draws it on its way
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QRect cell = option.rect.adjusted(5, 5, -5, -5);
        // The thumbnail keeps its 150 points, centred in a column that may be wider.
        const QRect frame(QPoint(cell.center().x() - cellSide / 2, cell.top()), QSize(cellSide, cellSide));
        const QPixmap thumbnail = index.data(Qt::DecorationRole).value<QPixmap>();
        if (!thumbnail.isNull()) {
            const QSize fitted = thumbnail.size().scaled(frame.size(), Qt::KeepAspectRatio);
            const QRect target(frame.center() - QPoint(fitted.width() / 2, fitted.height() / 2), fitted);
            painter->drawPixmap(target, thumbnail);
        } else {
            painter->fillRect(frame.adjusted(2, 2, -2, -2), option.palette.alternateBase());
        }
        const bool selected = index.data(QueueModel::IsSelectedRole).toBool();
        const bool dropTarget = view->dropTarget() == index;
        painter->setPen(QPen(selected || dropTarget ? QColor(Qt::blue) : QColor(128, 128, 128, 77), dropTarget ? 5
                                                                                                    : selected ? 3
                                                                                                               : 1));
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
            const QRect text(frame.left(), frame.bottom() + 2, cellSide, 20);
            painter->drawText(text, Qt::AlignHCenter | Qt::AlignVCenter,
                              option.fontMetrics.elidedText(index.data().toString(), Qt::ElideMiddle, cellSide));
        }
        painter->restore();
    }

private:
    bool showNames() const { return settings.value(Settings::showFilenamesInThumbnails); }
    SettingsStore& settings;
    QueueView* view;
};

constexpr int padding = 2;

} // namespace

void addStartingPointEntry(QMenu& menu, Queue& queue, const QUuid& id)
{
    if (queue.startingImageId() == id)
        menu.addAction(QStringLiteral("Clear Starting Point"), &menu, [&queue] { queue.setStartingImageId({}); });
    else
        menu.addAction(QStringLiteral("Start Slideshow Here"), &menu, [&queue, id] { queue.setStartingImageId(id); });
}

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
    setSpacing(0);
    setViewportMargins(padding, padding, padding, padding);
    setAccessibleName(QStringLiteral("Queue"));
    updateGrid();
    // A rebuilt grid forgets the anchor and any drag, as a change of form does.
    connect(&model.queue(), &Queue::refreshIDChanged, this, &QueueView::forgetDrag);
    connect(&settings, &SettingsStore::changed, this, [this](const QString& key) {
        if (key == QLatin1String(Settings::showFilenamesInThumbnails.name))
            updateGrid();
    });
}

void QueueView::updateGrid()
{
    const bool names = settings.value(Settings::showFilenamesInThumbnails);
    // As many columns of at least a cell and its margin as fit, sharing the width between them.
    const int minimum = cellSide + 10;
    // A point of slack: the list wraps a row that would fill the width exactly.
    const int width = std::max(minimum, viewport()->width() - 1);
    const int columns = std::max(1, width / minimum);
    const QSize cell(width / columns, cellSide + (names ? 28 : 10));
    if (cell != gridSize())
        setGridSize(cell);
    viewport()->update();
}

// The viewport narrows when the scroll bar appears: the columns share what is left.
bool QueueView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Resize)
        updateGrid();
    return QListView::viewportEvent(event);
}

void QueueView::forgetDrag()
{
    dragged.reset();
    pressed = QPersistentModelIndex();
    setTarget({});
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
}

// A click is a press and a release on the same cell with no drag between.
void QueueView::mouseReleaseEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || !pressed.isValid() || index != pressed) {
        pressed = QPersistentModelIndex();
        QListView::mouseReleaseEvent(event);
        return;
    }
    pressed = QPersistentModelIndex();
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
    dragged = pressed.data(QueueModel::ItemIdRole).toUuid();
    mime->setText(dragged->toString(QUuid::WithoutBraces));
    drag->setMimeData(mime);
    drag->setPixmap(pressed.data(Qt::DecorationRole).value<QPixmap>().scaled(64, 64, Qt::KeepAspectRatio));
    pressed = QPersistentModelIndex();
    drag->exec(Qt::MoveAction);
    forgetDrag();
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
    if (event->mimeData()->hasText() && !event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
        setTarget(indexAt(event->position().toPoint()));
    } else {
        event->ignore();
    }
}

void QueueView::dragLeaveEvent(QDragLeaveEvent* event)
{
    setTarget({});
    QListView::dragLeaveEvent(event);
}

void QueueView::setTarget(const QModelIndex& index)
{
    if (QModelIndex(target) == index)
        return;
    target = index;
    viewport()->update();
}

void QueueView::dropEvent(QDropEvent* event)
{
    setTarget({});
    const QUuid id = QUuid::fromString(event->mimeData()->text().trimmed());
    const QModelIndex onto = indexAt(event->position().toPoint());
    if (id.isNull() || !onto.isValid() || event->mimeData()->hasUrls()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    const qsizetype from = queue.queue().indexOf(id);
    const QRect start = from >= 0 ? visualRect(queue.index(int(from))) : QRect();
    if (queue.queue().move(id, onto.data(QueueModel::ItemIdRole).toUuid()) && start.isValid())
        glide(id, start);
}

bool QueueView::isMoving(const QModelIndex& index) const { return motion && QModelIndex(moving) == index; }

// The moved cell travels from where it was to its new place, easing in and out.
void QueueView::glide(const QUuid& id, const QRect& from)
{
    const qsizetype row = queue.queue().indexOf(id);
    if (row < 0)
        return;
    moving = queue.index(int(row));
    const QRect to = visualRect(moving);
    movingPicture = QPixmap(from.size() * devicePixelRatioF());
    movingPicture.setDevicePixelRatio(devicePixelRatioF());
    movingPicture.fill(Qt::transparent);
    {
        QPainter painter(&movingPicture);
        QStyleOptionViewItem option;
        initViewItemOption(&option);
        option.rect = QRect(QPoint(), from.size());
        const QPersistentModelIndex drawn = moving;
        moving = QPersistentModelIndex(); // so the delegate draws it here
        itemDelegate()->paint(&painter, option, drawn);
        moving = drawn;
    }
    if (motion)
        motion->stop();
    auto* animation = new QVariantAnimation(this);
    animation->setDuration(moveMilliseconds);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    animation->setStartValue(from);
    animation->setEndValue(to);
    connect(animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        movingRect = value.toRect();
        viewport()->update();
    });
    connect(animation, &QVariantAnimation::finished, this, [this] {
        moving = QPersistentModelIndex();
        viewport()->update();
    });
    motion = animation;
    movingRect = from;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void QueueView::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    if (!motion || !moving.isValid())
        return;
    QPainter painter(viewport());
    painter.drawPixmap(movingRect.topLeft(), movingPicture);
}

void QueueView::contextMenuEvent(QContextMenuEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid())
        return;
    const QUuid id = index.data(QueueModel::ItemIdRole).toUuid();
    QMenu menu(this);
    addStartingPointEntry(menu, queue.queue(), id);
    const bool names = settings.value(Settings::showFilenamesInThumbnails);
    menu.addAction(names ? QStringLiteral("Hide Filenames") : QStringLiteral("Show Filenames"), this,
                   [this, names] { settings.set(Settings::showFilenamesInThumbnails, !names); });
    menu.exec(event->globalPos());
}

} // namespace tb
