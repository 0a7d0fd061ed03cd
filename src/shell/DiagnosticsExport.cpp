#include "DiagnosticsExport.h"

#include "core/FileRevealer.h"
#include "core/Logger.h"
#include "core/UserDialogs.h"

#include <QSaveFile>

namespace tb {

void exportDiagnosticLogs(const Logger& logger, UserDialogs& dialogs, FileRevealer& revealer)
{
    const auto contents = logger.getLogContents();
    if (!contents) {
        dialogs.alert(AlertStyle::Warning, QStringLiteral("No Logs Available"),
                      QStringLiteral("No diagnostic logs were found."));
        return;
    }

    SavePanelOptions panel;
    panel.title = QStringLiteral("Save Diagnostic Logs");
    panel.message = QStringLiteral("Choose where to save the diagnostic logs");
    panel.fileName = QStringLiteral("Tallowbrook_logs.txt");
    panel.nameFilters = {QStringLiteral("Plain text (*.txt)")};
    panel.defaultSuffix = QStringLiteral("txt");
    const QString path = dialogs.savePanel(panel);
    if (path.isEmpty())
        return;

    // QSaveFile writes beside the target and renames, so a failed export leaves any earlier
    // file at that path intact.
    QSaveFile file(path);
    const QByteArray bytes = contents->toUtf8();
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    if (!saved) {
        const QString error = file.errorString();
        file.cancelWriting();
        logError(QStringLiteral("Failed to save logs: ") + error);
        dialogs.alert(AlertStyle::Critical, QStringLiteral("Failed to Export Logs"),
                      QStringLiteral("An error occurred while saving the logs:\n") + error);
        return;
    }

    const QuestionAnswer answer =
        dialogs.question(AlertStyle::Information, QStringLiteral("Logs Exported Successfully"),
                         QStringLiteral("The diagnostic logs have been saved to:\n") + path,
                         {QStringLiteral("OK"), QStringLiteral("Show in File Manager")});
    if (answer.button == 1)
        revealer.reveal(path);
}

} // namespace tb
