#pragma once

#include <QString>

namespace tb {

// Why an export stopped, as the user is told (the code and description) and as the log keeps it
// (the detail, which names what the libraries said when the description cannot).
struct ExportError {
    static constexpr const char* domain = "VideoExporterError";

    int code = 0;
    QString description;
    QString detail; // empty when the description says it all
};

} // namespace tb
