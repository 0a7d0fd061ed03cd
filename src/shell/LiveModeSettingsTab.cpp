#include "LiveModeSettingsTab.h"

#include <QFormLayout>

namespace tb {

LiveModeSettingsTab::LiveModeSettingsTab(SettingsStore& settings, QWidget* parent) : SettingsTab(settings, parent)
{
    QFormLayout* rows = addRows();
    addPicker(rows, QStringLiteral("When new photos are detected:"), Settings::liveModeNewPhotosBehavior,
              {{QStringLiteral("Add to end of queue"), QStringLiteral("queue")},
               {QStringLiteral("Show next"), QStringLiteral("next")}},
              QStringLiteral("queue"));
    addNote(rows, QStringLiteral("\"Add to end of queue\" places new photos after all remaining photos. \"Show next\" "
                                 "inserts new photos immediately after the current photo, so they appear as soon as "
                                 "the slideshow advances."));
}

} // namespace tb
