#include "OverlaySettingsTab.h"

#include "ColorButton.h"
#include "PositionPickerView.h"
#include "core/SettingsStore.h"
#include "core/UserDialogs.h"
#include "media/Bookmark.h"
#include "media/MediaTypes.h"
#include "playback/OverlayView.h"

#include <QFileInfo>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

#include <cmath>

namespace tb {

namespace {

QString wholePoints(double points) { return QStringLiteral("%1 pt").arg(std::lround(points)); }

// Every picture type the queue takes can be the overlay; clips cannot.
QString pictureFilter()
{
    QStringList patterns;
    for (const QString& extension : supportedFileExtensions())
        if (!isVideoExtension(extension))
            patterns.append(QStringLiteral("*.") + extension);
    return QStringLiteral("Images (%1)").arg(patterns.join(QLatin1Char(' ')));
}

QPushButton* pushButton(QWidget* parent, const QString& text)
{
    auto* button = new QPushButton(text, parent);
    button->setAccessibleName(text);
    button->setAutoDefault(false);
    return button;
}

} // namespace

OverlaySettingsTab::OverlaySettingsTab(SettingsStore& settings, UserDialogs& dialogs, QWidget* parent)
    : SettingsTab(settings, parent), dialogs(dialogs)
{
    QFormLayout* head = addRows();
    addSwitch(head, QStringLiteral("Enable Overlay:"), Settings::overlayEnabled);
    addNote(head, QStringLiteral("Overlay will appear on top of all slideshow content in the selected corner."));
    // The overlay draws text only for "text"; anything else is a picture.
    addPicker(head, QStringLiteral("Overlay Type:"), Settings::overlayType,
              {{QStringLiteral("Image"), QStringLiteral("image")}, {QStringLiteral("Text"), QStringLiteral("text")}},
              QStringLiteral("image"));

    QFormLayout* imageRows = addSection(QStringLiteral("Image Settings"));
    imageSection = imageRows->parentWidget();
    auto* imageLine = new QWidget(imageSection);
    auto* imageLayout = new QHBoxLayout(imageLine);
    imageLayout->setContentsMargins(0, 0, 0, 0);
    QPushButton* select = pushButton(imageLine, QStringLiteral("Select..."));
    clearImage = pushButton(imageLine, QStringLiteral("Clear"));
    imageName = new QLabel(imageLine);
    imageLayout->addWidget(select);
    imageLayout->addWidget(clearImage);
    imageLayout->addWidget(imageName, 1);
    addRow(imageRows, QStringLiteral("Image:"), imageLine);
    connect(select, &QPushButton::clicked, this, &OverlaySettingsTab::selectImage);
    connect(clearImage, &QPushButton::clicked, this, [this] { this->settings.remove(Settings::overlayImageBookmark); });
    follow({Settings::overlayImageBookmark.name}, [this] { showImage(); });
    addPicker(imageRows, QStringLiteral("Size:"), Settings::overlaySize,
              {{QStringLiteral("Small"), QStringLiteral("small")},
               {QStringLiteral("Medium"), QStringLiteral("medium")},
               {QStringLiteral("Large"), QStringLiteral("large")}},
              QStringLiteral("medium"));
    addNote(imageRows, QStringLiteral("Small: 5%, Medium: 10%, Large: 15% of screen width"));

    QFormLayout* textRows = addSection(QStringLiteral("Text Settings"));
    textSection = textRows->parentWidget();
    text = new QLineEdit(textSection);
    text->setPlaceholderText(QStringLiteral("Enter overlay text"));
    addRow(textRows, QStringLiteral("Text:"), text);
    connect(text, &QLineEdit::textEdited, this,
            [this](const QString& typed) { this->settings.set(Settings::overlayText, typed); });
    follow({Settings::overlayText.name}, [this] {
        // Only a change from elsewhere: setting the same text would move the cursor while typing.
        const QString stored = this->settings.value(Settings::overlayText);
        if (text->text() != stored)
            text->setText(stored);
    });
    font = new QFontComboBox(textSection);
    font->setEditable(false); // a family from the list, as the overlay can only draw those
    addRow(textRows, QStringLiteral("Font:"), font);
    connect(font, &QFontComboBox::currentFontChanged, this,
            [this](const QFont& chosen) { this->settings.set(Settings::overlayFontFamily, chosen.family()); });
    follow({Settings::overlayFontFamily.name}, [this] {
        const QSignalBlocker quiet(font);
        font->setCurrentFont(QFont(this->settings.value(Settings::overlayFontFamily)));
    });
    addSlider(textRows, QStringLiteral("Size:"), {Settings::overlayFontSize, 8, 72, 1.0, wholePoints});
    fontColor = new ColorButton(QStringLiteral("Color"), textSection);
    addRow(textRows, QStringLiteral("Color:"), fontColor);
    connect(fontColor, &ColorButton::colorChosen, this,
            [this](const QColor& colour) { this->settings.saveColor(Settings::overlayFontColorData, colour); });
    follow({Settings::overlayFontColorData.name},
           [this] { fontColor->setColor(this->settings.loadColor(Settings::overlayFontColorData, Qt::white)); });

    follow({Settings::overlayType.name}, [this] {
        const bool isText = this->settings.value(Settings::overlayType) == QLatin1String("text");
        textSection->setVisible(isText);
        imageSection->setVisible(!isText);
    });

    QFormLayout* placeRows = addSection(QStringLiteral("Position & Appearance"));
    position = new PositionPickerView(placeRows->parentWidget());
    addRow(placeRows, QStringLiteral("Position:"), position);
    connect(position, &PositionPickerView::positionChosen, this,
            [this](const QString& raw) { this->settings.set(Settings::overlayPosition, raw); });
    follow({Settings::overlayPosition.name},
           [this] { position->setPosition(this->settings.value(Settings::overlayPosition)); });
    addSlider(placeRows, QStringLiteral("Margin:"), {Settings::overlayMargin, 0, 20, 5.0, wholePoints});
    addSlider(placeRows, QStringLiteral("Opacity:"), {Settings::overlayOpacity, 1, 10, 0.1, [](double opacity) {
                                                          return QStringLiteral("%1%").arg(std::lround(opacity * 100));
                                                      }});
}

void OverlaySettingsTab::selectImage()
{
    OpenPanelOptions panel;
    panel.title = QStringLiteral("Select an image for the overlay");
    panel.message = panel.title;
    panel.prompt = QStringLiteral("Select");
    panel.nameFilters = {pictureFilter()};
    panel.canChooseFiles = true;
    panel.canChooseDirectories = false;
    panel.allowsMultipleSelection = false;
    const QStringList chosen = dialogs.openPanel(panel);
    if (!chosen.isEmpty())
        OverlayView::saveOverlayImage(settings, chosen.first()); // logs why, when it cannot
}

// The remembered picture's file name beside the buttons; Clear only while there is one.
void OverlaySettingsTab::showImage()
{
    const auto data = settings.value(Settings::overlayImageBookmark);
    const auto bookmark = data ? Bookmark::fromData(*data) : std::nullopt;
    imageName->setText(bookmark ? QFileInfo(bookmark->path).fileName() : QString());
    imageName->setAccessibleName(imageName->text());
    clearImage->setEnabled(data.has_value());
}

} // namespace tb
