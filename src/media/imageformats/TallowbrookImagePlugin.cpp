#include "HeifHandler.h"
#include "JxlHandler.h"

#include <QImageIOPlugin>

// HEIC, AVIF and JPEG XL for every QImageReader in the program. Linked statically and imported
// by the media library, so the formats do not depend on what is installed beside the program.
// (At global scope: the static plugin's import symbol is made from the bare class name.)
class TallowbrookImagePlugin final : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "tallowbrook_imageformats.json")
public:
    Capabilities capabilities(QIODevice* device, const QByteArray& format) const override
    {
        static const QList<QByteArray> keys{"heic", "heif", "avif", "jxl"};
        if (keys.contains(format.toLower()))
            return CanRead;
        // Files with another name or none are recognised by their content.
        if (format.isEmpty() && device && device->isReadable() &&
            (tb::HeifHandler::canRead(device) || tb::JxlHandler::canRead(device)))
            return CanRead;
        return {};
    }

    QImageIOHandler* create(QIODevice* device, const QByteArray& format) const override
    {
        QImageIOHandler* handler = nullptr;
        const QByteArray key = format.toLower();
        if (key == "jxl" || (key.isEmpty() && tb::JxlHandler::canRead(device)))
            handler = new tb::JxlHandler;
        else
            handler = new tb::HeifHandler;
        handler->setDevice(device);
        handler->setFormat(format);
        return handler;
    }
};

#include "TallowbrookImagePlugin.moc"
