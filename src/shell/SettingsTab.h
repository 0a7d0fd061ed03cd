#pragma once

#include "core/SettingsKeys.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QWidget>

#include <functional>
#include <initializer_list>
#include <utility>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QSlider;
class QVBoxLayout;

namespace tb {

class SettingsStore;

// A page of the advanced options: rows of a label and a control bound to its setting, with notes
// under them. A control writes its setting when the user changes it, and follows writes made
// anywhere else (the main window, a loaded slideshow) without writing back.
class SettingsTab : public QWidget {
    Q_OBJECT
protected:
    explicit SettingsTab(SettingsStore& settings, QWidget* parent = nullptr);

    // A slider over whole positions first...last, each worth `unit` of the setting; the text
    // beside it shows the setting's value.
    struct SliderRange {
        DoubleSetting setting;
        int first = 0;
        int last = 0;
        double unit = 1.0;
        std::function<QString(double)> shown;
        int width = 0; // 0: as wide as the row allows
    };

    // Rows at the top of the page, or under a titled group (whose box is the rows' parentWidget()).
    QFormLayout* addRows();
    QFormLayout* addSection(const QString& title);
    // The label's text is also the control's accessible name, unless it already has one.
    void addRow(QFormLayout* rows, const QString& label, QWidget* control);
    // An information icon and the text, under the row before it; returns the text to change it.
    QLabel* addNote(QFormLayout* rows, const QString& text);

    // An inverted switch shows on while the stored flag is off.
    QCheckBox* addSwitch(QFormLayout* rows, const QString& label, BoolSetting setting, bool inverted = false);
    // Entries of shown text and raw value; a stored value that is none of them shows as
    // `unknownReadsAs`, the raw value its readers take it for.
    QComboBox* addPicker(QFormLayout* rows, const QString& label, StringSetting setting,
                         const QList<std::pair<QString, QString>>& entries, const QString& unknownReadsAs);
    QSlider* addSlider(QFormLayout* rows, const QString& label, const SliderRange& range);

    // Runs `show` now and after every write of one of the keys, here or elsewhere. `show` puts
    // the stored value into its controls with their signals blocked.
    void follow(std::initializer_list<const char*> keys, const std::function<void()>& show);

    SettingsStore& settings;

private:
    void settingChanged(const QString& key);

    QVBoxLayout* page = nullptr;
    QHash<QString, QList<std::function<void()>>> followers;
};

} // namespace tb
