#pragma once

#include <QList>
#include <QWidget>

#include <utility>

namespace tb {

// The table of every key the players understand.
class KeyboardShortcutsView final : public QWidget {
    Q_OBJECT
public:
    explicit KeyboardShortcutsView(QWidget* parent = nullptr);
    // Key and meaning, in the order shown.
    static QList<std::pair<QString, QString>> shortcuts();
};

} // namespace tb
