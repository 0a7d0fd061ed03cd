#include "KeyboardShortcutsView.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tb {

KeyboardShortcutsView::KeyboardShortcutsView(QWidget* parent) : QWidget(parent)
{
    const auto rows = shortcuts();
    auto* table = new QTableWidget(int(rows.size()), 2, this);
    table->setObjectName(QStringLiteral("shortcuts"));
    table->setHorizontalHeaderLabels({QStringLiteral("Key"), QStringLiteral("Action")});
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    for (int row = 0; row < rows.size(); ++row) {
        table->setItem(row, 0, new QTableWidgetItem(rows[row].first));
        table->setItem(row, 1, new QTableWidgetItem(rows[row].second));
    }
    table->resizeColumnToContents(0);
    table->setMinimumSize(320, table->verticalHeader()->length() + table->horizontalHeader()->height() + 4);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table);
}

QList<std::pair<QString, QString>> KeyboardShortcutsView::shortcuts()
{
    return {
        {QStringLiteral("Space"), QStringLiteral("Pause/Resume slideshow")},
        {QStringLiteral("Esc"), QStringLiteral("Exit slideshow")},
        {QStringLiteral("→"), QStringLiteral("Next file")},
        {QStringLiteral("←"), QStringLiteral("Previous file")},
        {QStringLiteral("i"), QStringLiteral("Show/hide file information")},
        {QStringLiteral("t"), QStringLiteral("Show/hide countdown timer")},
        {QStringLiteral("f"), QStringLiteral("Toggle full-screen mode")},
        {QStringLiteral("r"), QStringLiteral("Reveal file in File Manager")},
    };
}

} // namespace tb
