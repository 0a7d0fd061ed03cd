#pragma once

#include "core/UserDialogs.h"

class QWidget;

namespace tb {

// The real dialogs: QMessageBox for questions and alerts, Qt's own QFileDialog for panels (the
// same look on every desktop, and reachable over the accessibility bus).
class QtUserDialogs final : public UserDialogs {
public:
    explicit QtUserDialogs(QWidget* parent = nullptr) : parent(parent) {}

    QuestionAnswer question(AlertStyle style, const QString& title, const QString& text, const QStringList& buttons,
                            const QString& checkBoxText = {}) override;
    QStringList openPanel(const OpenPanelOptions& options) override;
    QString savePanel(const SavePanelOptions& options) override;

private:
    QWidget* parent;
};

} // namespace tb
