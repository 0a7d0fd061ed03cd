#pragma once

#include <QDialog>
#include <QList>
#include <QString>

namespace tb {

struct HelpText {
    QString title;
    QString description;
};

// What the main window's settings do, one short paragraph each.
class SettingsHelpView final : public QDialog {
    Q_OBJECT
public:
    explicit SettingsHelpView(QWidget* parent = nullptr);

    // In the order shown.
    static QList<HelpText> helpTexts();
};

} // namespace tb
