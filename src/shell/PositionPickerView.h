#pragma once

#include <QWidget>

class QButtonGroup;

namespace tb {

// The overlay's corner: four buttons laid out as the corners of a screen.
class PositionPickerView final : public QWidget {
    Q_OBJECT
public:
    explicit PositionPickerView(QWidget* parent = nullptr);

    // A raw position that is none of the four shows as bottomRight, where the overlay puts it.
    void setPosition(const QString& raw);
    QString position() const;

Q_SIGNALS:
    // The user chose a corner.
    void positionChosen(const QString& raw);

private:
    QButtonGroup* corners = nullptr;
};

} // namespace tb
