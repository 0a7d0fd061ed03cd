#include "AdvancedOptionsView.h"

#include "AdvancedSettingsTab.h"
#include "DisplaySettingsTab.h"
#include "LiveModeSettingsTab.h"
#include "OverlaySettingsTab.h"
#include "PlaybackSettingsTab.h"

#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tb {

AdvancedOptionsView::AdvancedOptionsView(Services services, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Advanced options"));
    setAccessibleName(windowTitle());
    setMinimumSize(560, 480);

    tabWidget = new QTabWidget(this);
    tabWidget->setAccessibleName(windowTitle());
    tabWidget->tabBar()->setAccessibleName(windowTitle());
    tabWidget->addTab(new DisplaySettingsTab(services.settings, services.displays), QStringLiteral("Display"));
    tabWidget->addTab(new PlaybackSettingsTab(services.settings), QStringLiteral("Playback"));
    tabWidget->addTab(new OverlaySettingsTab(services.settings, services.dialogs), QStringLiteral("Overlay"));
    tabWidget->addTab(new LiveModeSettingsTab(services.settings), QStringLiteral("Live Mode"));
    tabWidget->addTab(new AdvancedSettingsTab(services.settings, services.idleWatcher), QStringLiteral("Other"));

    // Escape closes the panel too, as a dialog's cancel.
    auto* close = new QPushButton(QStringLiteral("Close"), this);
    close->setAccessibleName(close->text());
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabWidget, 1);
    layout->addWidget(close, 0, Qt::AlignRight);
}

} // namespace tb
