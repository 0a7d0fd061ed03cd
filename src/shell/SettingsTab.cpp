#include "SettingsTab.h"

#include "IconLine.h"
#include "core/SettingsStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace tb {

namespace {

// A unit below 1 divides instead, so 7 steps of 0.1 store 0.7 and not 0.7000000000000001.
double valueAt(int position, double unit) { return unit >= 1.0 ? position * unit : position / std::round(1.0 / unit); }

int positionOf(double value, double unit) { return int(std::lround(value / unit)); }

} // namespace

SettingsTab::SettingsTab(SettingsStore& settings, QWidget* parent) : QWidget(parent), settings(settings)
{
    page = new QVBoxLayout(this);
    page->addStretch(1);
    connect(&settings, &SettingsStore::changed, this, &SettingsTab::settingChanged);
}

QFormLayout* SettingsTab::addRows()
{
    auto* rows = new QFormLayout;
    rows->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    page->insertLayout(page->count() - 1, rows); // above the closing stretch
    return rows;
}

QFormLayout* SettingsTab::addSection(const QString& title)
{
    // A lone "&" in a group's title would mark a shortcut letter instead of showing.
    auto* box = new QGroupBox(QString(title).replace(QLatin1Char('&'), QStringLiteral("&&")), this);
    box->setAccessibleName(title);
    auto* rows = new QFormLayout(box);
    rows->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    page->insertWidget(page->count() - 1, box);
    return rows;
}

void SettingsTab::addRow(QFormLayout* rows, const QString& label, QWidget* control)
{
    if (control->accessibleName().isEmpty())
        control->setAccessibleName(label);
    auto* text = new QLabel(label, rows->parentWidget());
    text->setBuddy(control);
    rows->addRow(text, control);
}

QLabel* SettingsTab::addNote(QFormLayout* rows, const QString& text)
{
    auto* note = new QLabel(text);
    note->setAccessibleName(text);
    note->setForegroundRole(QPalette::PlaceholderText); // secondary to the control above it
    rows->addRow(nullptr, iconLine(rows->parentWidget(),
                                   icon(this, "dialog-information", QStyle::SP_MessageBoxInformation), note));
    return note;
}

QCheckBox* SettingsTab::addSwitch(QFormLayout* rows, const QString& label, BoolSetting setting, bool inverted)
{
    auto* check = new QCheckBox(rows->parentWidget());
    addRow(rows, label, check);
    connect(check, &QCheckBox::toggled, this,
            [this, setting, inverted](bool on) { settings.set(setting, on != inverted); });
    follow({setting.name}, [this, check, setting, inverted] {
        const QSignalBlocker quiet(check);
        check->setChecked(settings.value(setting) != inverted);
    });
    return check;
}

QComboBox* SettingsTab::addPicker(QFormLayout* rows, const QString& label, StringSetting setting,
                                  const QList<std::pair<QString, QString>>& entries, const QString& unknownReadsAs)
{
    auto* picker = new QComboBox(rows->parentWidget());
    for (const auto& [text, raw] : entries)
        picker->addItem(text, raw);
    picker->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    addRow(rows, label, picker);
    connect(picker, &QComboBox::currentIndexChanged, this,
            [this, picker, setting](int index) { settings.set(setting, picker->itemData(index).toString()); });
    follow({setting.name}, [this, picker, setting, unknownReadsAs] {
        const QSignalBlocker quiet(picker);
        const int index = picker->findData(settings.value(setting));
        picker->setCurrentIndex(index >= 0 ? index : picker->findData(unknownReadsAs));
    });
    return picker;
}

QSlider* SettingsTab::addSlider(QFormLayout* rows, const QString& label, const SliderRange& range)
{
    auto* line = new QWidget(rows->parentWidget());
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* slider = new QSlider(Qt::Horizontal, line);
    slider->setRange(range.first, range.last);
    slider->setSingleStep(1);
    slider->setPageStep(1);
    slider->setAccessibleName(label);
    if (range.width > 0)
        slider->setFixedWidth(range.width);
    auto* value = new QLabel(line);
    value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("100 pt")));
    layout->addWidget(slider, range.width > 0 ? 0 : 1);
    layout->addWidget(value);
    if (range.width > 0)
        layout->addStretch(1);
    addRow(rows, label, line);
    connect(slider, &QSlider::valueChanged, this,
            [this, range](int position) { settings.set(range.setting, valueAt(position, range.unit)); });
    follow({range.setting.name}, [this, slider, value, range] {
        const double stored = settings.value(range.setting);
        const QSignalBlocker quiet(slider);
        slider->setValue(positionOf(stored, range.unit));
        value->setText(range.shown(stored));
        slider->setAccessibleDescription(value->text());
    });
    return slider;
}

void SettingsTab::follow(std::initializer_list<const char*> keys, const std::function<void()>& show)
{
    for (const char* key : keys)
        followers[QLatin1String(key)].append(show);
    show();
}

void SettingsTab::settingChanged(const QString& key)
{
    const auto found = followers.constFind(key);
    if (found == followers.constEnd())
        return;
    for (const auto& show : *found)
        show();
}

} // namespace tb
