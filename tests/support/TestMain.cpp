#include "core/Logger.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

// Every test process runs with its own empty home folders, so no test reads or writes the
// user's real settings, caches or logs, and widgets draw offscreen.
int main(int argc, char** argv)
{
    QTemporaryDir home;
    if (!home.isValid())
        return 2;
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
        const QString path = QDir(home.path()).filePath(QString::fromLatin1(name));
        QDir().mkpath(path);
        qputenv(name, path.toLocal8Bit());
    }
    // Qt insists that the runtime folder is private to the user.
    QFile::setPermissions(QDir(home.path()).filePath(QStringLiteral("XDG_RUNTIME_DIR")),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Player windows draw with Qt Quick's software renderer: offscreen has no GPU.
    qputenv("QT_QUICK_BACKEND", "software");

    QApplication app(argc, argv);
    // The shared logger writes into the temporary data folder and keeps the console quiet.
    tb::Logger::installShared(std::make_unique<tb::Logger>(QDir(home.path()).filePath(QStringLiteral("XDG_DATA_HOME")),
                                                           [](const QByteArray&) {}));

    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
