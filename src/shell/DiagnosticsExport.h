#pragma once

namespace tb {

class FileRevealer;
class Logger;
class UserDialogs;

// "Export Diagnostic Logs...": saves the text of the newest log where the user chooses.
void exportDiagnosticLogs(const Logger& logger, UserDialogs& dialogs, FileRevealer& revealer);

} // namespace tb
