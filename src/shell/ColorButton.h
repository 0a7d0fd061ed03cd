#pragma once

#include <QColor>
#include <QToolButton>

#include <functional>

namespace tb {

// A colour well: a swatch of the colour that opens a colour chooser. Each colour the user
// chooses is announced at once; setColor() shows a colour without announcing it.
class ColorButton final : public QToolButton {
    Q_OBJECT
public:
    // Given the present colour, returns the chosen one, or an invalid colour when the user
    // cancels. The default asks with QColorDialog; tests put their own answer here.
    using Chooser = std::function<QColor(const QColor& current, QWidget* parent, const QString& title)>;

    // `title` heads the chooser.
    explicit ColorButton(const QString& title, QWidget* parent = nullptr);

    QColor color() const { return shown; }
    void setColor(const QColor& color);
    void setChooser(Chooser chooser);

Q_SIGNALS:
    void colorChosen(const QColor& color);

private:
    void choose();

    QString title;
    QColor shown;
    Chooser chooser;
};

} // namespace tb
