// A stand-in for a file manager in the end-to-end tests: a small window that starts a real drag
// of the paths on its command line as soon as a mouse button goes down on it, so a drop reaches
// the program through the display server's drag-and-drop protocol.
// Usage: drag_source <x> <y> <path>...
#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

#include <cstdio>

namespace {

class DragSource final : public QLabel {
public:
    explicit DragSource(QList<QUrl> urls) : QLabel(QStringLiteral("Drag me")), urls(std::move(urls))
    {
        setWindowTitle(QStringLiteral("Drag source"));
        setAlignment(Qt::AlignCenter);
        setStyleSheet(QStringLiteral("background: yellow"));
    }

protected:
    void mousePressEvent(QMouseEvent*) override
    {
        auto* drag = new QDrag(this);
        auto* mime = new QMimeData;
        mime->setUrls(urls);
        drag->setMimeData(mime);
        // What the pointer is over says whether it would take the drop: the test releases the
        // button only once a target has said yes.
        connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) {
            std::printf("target %s\n", action == Qt::CopyAction ? "accepts" : "refuses");
            std::fflush(stdout);
        });
        const Qt::DropAction action = drag->exec(Qt::CopyAction);
        std::printf("drag ended: %s\n", action == Qt::CopyAction ? "copied" : "ignored");
        std::fflush(stdout);
    }

private:
    QList<QUrl> urls;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (argc < 4)
        return 2;
    QList<QUrl> urls;
    for (int i = 3; i < argc; ++i)
        urls.append(QUrl::fromLocalFile(QString::fromLocal8Bit(argv[i])));
    DragSource source(urls);
    source.setGeometry(QString::fromLatin1(argv[1]).toInt(), QString::fromLatin1(argv[2]).toInt(), 200, 100);
    source.show();
    QMetaObject::invokeMethod(
        &app,
        [] {
            std::printf("ready\n");
            std::fflush(stdout);
        },
        Qt::QueuedConnection);
    return app.exec();
}
