#include "ShellFixture.h"

#include "documents/DocumentReader.h"
#include "shell/AppDelegate.h"
#include "support/LogCapture.h"

#include <QSignalSpy>
#include <QTest>

using namespace tb;
using tb::test::LogCapture;
using tb::test::ShellFixture;

namespace {

// Reads every document as an empty one named after its file, or fails with a set reason.
class FakeDocuments final : public DocumentReader {
public:
    std::variant<SlideshowDocument, QString> read(const QString& filePath) override
    {
        reads.append(filePath);
        if (!failure.isEmpty())
            return failure;
        SlideshowDocument document;
        document.version = QFileInfo(filePath).fileName();
        return document;
    }
    QStringList reads;
    QString failure;
};

struct AppDelegateTest : ShellFixture {
    FakeDocuments documents;
    AppDelegate delegate{analytics, settings, commands, documents, scheduler, dialogs};
};

QUrl file(const char* path) { return QUrl::fromLocalFile(QString::fromUtf8(path)); }

} // namespace

TEST_F(AppDelegateTest, ARequestBeforeAnyWindowIsDeliveredOnceToTheFirstWindow)
{
    LogCapture capture;
    delegate.openUrls({file("/docs/Trip.slideshow"), file("/docs/photo.jpg"), file("/docs/OLD.SLIDESHOW")});
    EXPECT_EQ(documents.reads, QStringList{QStringLiteral("/docs/Trip.slideshow")})
        << "only the exact extension is read; other files pass without a word";
    EXPECT_EQ(capture.messages(LogLevel::Info),
              (QStringList{QStringLiteral("Received file open request from Finder: [file:///docs/Trip.slideshow, "
                                          "file:///docs/photo.jpg, file:///docs/OLD.SLIDESHOW]"),
                           QStringLiteral("Successfully processed file open request for: Trip.slideshow")}));

    ContentView& first = addWindow();
    QSignalSpy firstSpy(&first, &ContentView::documentReceived);
    first.show();
    ASSERT_EQ(firstSpy.count(), 1);
    EXPECT_EQ(firstSpy.at(0).at(0).value<SlideshowDocument>().version, QStringLiteral("Trip.slideshow"));

    ContentView& second = addWindow();
    QSignalSpy secondSpy(&second, &ContentView::documentReceived);
    second.show();
    commands.post(Command::saveSlideshow);
    EXPECT_EQ(secondSpy.count(), 0) << "the held document went to the first window only";
    EXPECT_EQ(firstSpy.count(), 1) << "and only once";
}

TEST_F(AppDelegateTest, HeldDocumentReachesTheFirstSubscriber)
{
    delegate.openUrls({file("/docs/A.slideshow"), file("/docs/B.slideshow")});
    QStringList received;
    QObject listener;
    commands.subscribe(&listener, [&](Command c, const QVariantMap& info) {
        if (c == Command::openSlideshowFromFinder)
            received.append(info.value(QStringLiteral("document")).value<SlideshowDocument>().version);
    });
    EXPECT_EQ(received, (QStringList{QStringLiteral("A.slideshow"), QStringLiteral("B.slideshow")}))
        << "several documents arrive in turn";
}

TEST_F(AppDelegateTest, AnUnreadableDocumentIsLoggedAndAlertedAfterTheRequest)
{
    LogCapture capture;
    documents.failure = QStringLiteral("The file is damaged.");
    openWindow();
    delegate.openUrls({file("/docs/Broken.slideshow")});
    EXPECT_EQ(capture.messages(LogLevel::Error),
              QStringList{QStringLiteral("Failed to open slideshow from Finder: The file is damaged.")});
    EXPECT_TRUE(dialogs.prompts.isEmpty()) << "the alert waits for the event loop";
    ASSERT_TRUE(QTest::qWaitFor([&] { return !dialogs.prompts.isEmpty(); }, 5000));
    EXPECT_EQ(dialogs.prompts[0].style, AlertStyle::Critical);
    EXPECT_EQ(dialogs.prompts[0].title, QStringLiteral("Failed to Open Slideshow"));
    EXPECT_EQ(dialogs.prompts[0].text, QStringLiteral("Could not open 'Broken.slideshow': The file is damaged."));
}

TEST_F(AppDelegateTest, SessionsFollowHidingMinimisingAndQuitting)
{
    analytics.beginSession();
    ContentView& a = openWindow();
    ContentView& b = openWindow();
    a.showMinimized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return a.windowHandle()->windowStates() & Qt::WindowMinimized; }, 5000));
    delegate.windowDidMiniaturize();
    EXPECT_TRUE(analytics.isSessionRunning()) << "one window is still shown";

    b.showMinimized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return b.windowHandle()->windowStates() & Qt::WindowMinimized; }, 5000));
    delegate.windowDidMiniaturize();
    EXPECT_FALSE(analytics.isSessionRunning());

    delegate.windowDidDeminiaturize();
    EXPECT_TRUE(analytics.isSessionRunning());
    delegate.applicationStateChanged(Qt::ApplicationHidden);
    EXPECT_FALSE(analytics.isSessionRunning());
    delegate.applicationStateChanged(Qt::ApplicationInactive);
    EXPECT_TRUE(analytics.isSessionRunning()) << "shown again: a new session";
    delegate.applicationStateChanged(Qt::ApplicationActive);
    EXPECT_EQ(analytics.sessionsBegun(), 3);

    // Quitting writes the settings out and ends the session.
    settings.set(Settings::slideshowDelay, 9.0);
    delegate.applicationWillTerminate();
    EXPECT_FALSE(analytics.isSessionRunning());
    EXPECT_EQ(SettingsStore(dir.filePath(QStringLiteral("Tallowbrook.conf"))).value(Settings::slideshowDelay), 9.0);
}
