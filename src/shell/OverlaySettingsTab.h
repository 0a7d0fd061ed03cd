#pragma once

#include "SettingsTab.h"

class QLabel;
class QLineEdit;
class QFontComboBox;
class QPushButton;

namespace tb {

class ColorButton;
class PositionPickerView;
class UserDialogs;

// The mark laid over every show: a picture or a line of text, its corner, margin and opacity.
class OverlaySettingsTab final : public SettingsTab {
    Q_OBJECT
public:
    OverlaySettingsTab(SettingsStore& settings, UserDialogs& dialogs, QWidget* parent = nullptr);

private:
    void selectImage();
    void showImage();

    UserDialogs& dialogs;
    QWidget* imageSection = nullptr;
    QWidget* textSection = nullptr;
    QLabel* imageName = nullptr;
    QPushButton* clearImage = nullptr;
    QLineEdit* text = nullptr;
    QFontComboBox* font = nullptr;
    ColorButton* fontColor = nullptr;
    PositionPickerView* position = nullptr;
};

} // namespace tb
