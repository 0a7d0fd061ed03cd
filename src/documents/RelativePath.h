#pragma once

#include <QString>

namespace tb {

// The path from the folder `base` to `file`, as a document stores it beside the absolute one:
// both are cleaned, then compared component by component as plain text (no links are
// followed, case counts), each base component past the common part becomes "..", and the
// file's remaining components follow. The same path gives ".". Both paths are absolute.
QString relativePath(const QString& base, const QString& file);

} // namespace tb
