#pragma once

#include "SlideshowDocument.h"

#include <QString>

#include <variant>

namespace tb {

// Reads a .slideshow file into its records, or says why it cannot.
class DocumentReader {
public:
    virtual ~DocumentReader() = default;
    virtual std::variant<SlideshowDocument, QString> read(const QString& filePath) = 0;
};

} // namespace tb
