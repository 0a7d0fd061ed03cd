#include "SettingsHelpView.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tb {

SettingsHelpView::SettingsHelpView(QWidget* parent) : QDialog(parent)
{
    const QString heading = QStringLiteral("Settings - help");
    setWindowTitle(heading);
    setAccessibleName(heading);
    setMinimumWidth(420);

    auto* layout = new QVBoxLayout(this);
    auto* headingLabel = new QLabel(heading, this);
    QFont headingFont = headingLabel->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.3);
    headingLabel->setFont(headingFont);
    headingLabel->setAccessibleName(heading);
    layout->addWidget(headingLabel);

    for (const HelpText& entry : helpTexts()) {
        auto* title = new QLabel(entry.title, this);
        QFont titleFont = title->font();
        titleFont.setBold(true);
        title->setFont(titleFont);
        title->setAccessibleName(entry.title);
        auto* description = new QLabel(entry.description, this);
        description->setWordWrap(true);
        description->setAccessibleName(entry.description);
        layout->addSpacing(6);
        layout->addWidget(title);
        layout->addWidget(description);
    }

    auto* close = new QPushButton(QStringLiteral("Close"), this);
    close->setAccessibleName(close->text());
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    layout->addSpacing(6);
    layout->addWidget(close, 0, Qt::AlignRight);
}

QList<HelpText> SettingsHelpView::helpTexts()
{
    return {
        {QStringLiteral("Sort by"), QStringLiteral("Allows you to choose the order in which photos are displayed.")},
        {QStringLiteral("Display mode"), QStringLiteral("Allows you to set a slideshow mode - single photo, "
                                                        "side-by-side, 2x2 grid or 3x3 grid view.")},
        {QStringLiteral("Transition"), QStringLiteral("Allows you to set a preferred transition between photos.")},
        {QStringLiteral("Delay"), QStringLiteral("Sets the timing between consecutive photos.")},
        {QStringLiteral("Shuffle mode"), QStringLiteral("When enabled, photos appear in a random order.")},
        {QStringLiteral("Loop slideshow"), QStringLiteral("When enabled, the slideshow continuously repeats.")},
        {QStringLiteral("Advanced options"), QStringLiteral("Provides access to additional configuration options like "
                                                            "Image Scaling and other specialized features.")},
    };
}

} // namespace tb
