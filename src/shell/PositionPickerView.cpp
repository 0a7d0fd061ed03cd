#include "PositionPickerView.h"

#include <QButtonGroup>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QRadioButton>

#include <array>

namespace tb {

namespace {

struct Corner {
    const char* raw;
    const char* name;
    int row;
    int column;
    Qt::Alignment alignment;
};

// In the order of the button ids; the raw texts are the overlay's.
constexpr std::array<Corner, 4> cornerTable{{
    {"topLeft", "Top Left", 0, 0, Qt::AlignTop | Qt::AlignLeft},
    {"topRight", "Top Right", 0, 1, Qt::AlignTop | Qt::AlignRight},
    {"bottomLeft", "Bottom Left", 1, 0, Qt::AlignBottom | Qt::AlignLeft},
    {"bottomRight", "Bottom Right", 1, 1, Qt::AlignBottom | Qt::AlignRight},
}};
constexpr int fallbackCorner = 3;

} // namespace

PositionPickerView::PositionPickerView(QWidget* parent) : QWidget(parent), corners(new QButtonGroup(this))
{
    // A small framed "screen" with a button in each corner.
    auto* screen = new QFrame(this);
    screen->setFrameShape(QFrame::StyledPanel);
    screen->setFixedSize(96, 60);
    auto* grid = new QGridLayout(screen);
    grid->setContentsMargins(4, 4, 4, 4);
    for (int id = 0; id < int(cornerTable.size()); ++id) {
        const Corner& corner = cornerTable[size_t(id)];
        auto* button = new QRadioButton(screen);
        button->setToolTip(QString::fromLatin1(corner.name));
        button->setAccessibleName(button->toolTip());
        corners->addButton(button, id);
        grid->addWidget(button, corner.row, corner.column, corner.alignment);
    }
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(screen);
    layout->addStretch(1);
    connect(corners, &QButtonGroup::idClicked, this,
            [this](int id) { Q_EMIT positionChosen(QString::fromLatin1(cornerTable[size_t(id)].raw)); });
    setPosition(QString());
}

void PositionPickerView::setPosition(const QString& raw)
{
    int chosen = fallbackCorner;
    for (int id = 0; id < int(cornerTable.size()); ++id)
        if (raw == QLatin1String(cornerTable[size_t(id)].raw))
            chosen = id;
    corners->button(chosen)->setChecked(true);
}

QString PositionPickerView::position() const
{
    const int id = corners->checkedId();
    return QString::fromLatin1(cornerTable[size_t(id < 0 ? fallbackCorner : id)].raw);
}

} // namespace tb
