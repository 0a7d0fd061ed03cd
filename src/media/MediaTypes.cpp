#include "MediaTypes.h"

#include <array>

namespace tb {

const QStringList& supportedFileExtensions()
{
    static const QStringList list{QStringLiteral("jpg"),  QStringLiteral("jpeg"), QStringLiteral("png"),
                                  QStringLiteral("heic"), QStringLiteral("gif"),  QStringLiteral("webp"),
                                  QStringLiteral("avif"), QStringLiteral("jxl"),  QStringLiteral("tif"),
                                  QStringLiteral("tiff"), QStringLiteral("mp4"),  QStringLiteral("m4v"),
                                  QStringLiteral("mov"),  QStringLiteral("avi")};
    return list;
}

const QStringList& supportedVideoExtensions()
{
    static const QStringList list{QStringLiteral("mp4"), QStringLiteral("m4v"), QStringLiteral("mov"),
                                  QStringLiteral("avi")};
    return list;
}

const QStringList& liveModeExtensions()
{
    static const QStringList list = [] {
        QStringList narrower = supportedFileExtensions();
        for (const char* left : {"jxl", "tif", "tiff"})
            narrower.removeAll(QLatin1String(left));
        return narrower;
    }();
    return list;
}

bool isSupportedExtension(const QString& extension) { return supportedFileExtensions().contains(extension.toLower()); }

bool isVideoExtension(const QString& extension) { return supportedVideoExtensions().contains(extension.toLower()); }

GridOption gridOptionFromRaw(int raw) { return raw >= 1 && raw <= 3 ? GridOption(raw) : GridOption::none; }

QString gridOptionLabel(GridOption option)
{
    switch (option) {
    case GridOption::none:
        break;
    case GridOption::sideBySide:
        return QStringLiteral("Side-by-side view");
    case GridOption::twoByTwo:
        return QStringLiteral("2x2 Grid view");
    case GridOption::threeByThree:
        return QStringLiteral("3x3 Grid view");
    }
    return QStringLiteral("Single photo view");
}

// Rows are the raw value itself; columns come from a table.
int gridRows(GridOption option) { return int(option); }

int gridColumns(GridOption option)
{
    static constexpr std::array<int, 4> columns{0, 2, 2, 3};
    return columns[size_t(gridOptionFromRaw(int(option)))];
}

QString transitionTypeRaw(TransitionType type)
{
    switch (type) {
    case TransitionType::none:
        break;
    case TransitionType::fade:
        return QStringLiteral("Cross-fade");
    case TransitionType::kenBurns:
        return QStringLiteral("Ken Burns");
    }
    return QStringLiteral("-");
}

TransitionType transitionTypeFromRaw(const QString& raw)
{
    for (auto type : {TransitionType::fade, TransitionType::kenBurns})
        if (raw == transitionTypeRaw(type))
            return type;
    return TransitionType::none;
}

QString imageScalingModeRaw(ImageScalingMode mode)
{
    switch (mode) {
    case ImageScalingMode::fit:
        return QStringLiteral("Fit (maintain aspect ratio)");
    case ImageScalingMode::fill:
        return QStringLiteral("Fill (may crop image edges)");
    case ImageScalingMode::bestFit:
        break;
    }
    return QStringLiteral("Best Fit (no upscaling)");
}

ImageScalingMode imageScalingModeFromRaw(const QString& raw)
{
    for (auto mode : {ImageScalingMode::fit, ImageScalingMode::fill})
        if (raw == imageScalingModeRaw(mode))
            return mode;
    return ImageScalingMode::bestFit;
}

} // namespace tb
