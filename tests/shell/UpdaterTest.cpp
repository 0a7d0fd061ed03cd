#include "ShellFixture.h"

#include "core/ManualScheduler.h"
#include "core/Version.h"
#include "shell/UpdaterControllerWrapper.h"
#include "support/ScriptedUserDialogs.h"

#include <QNetworkAccessManager>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace tb;
using namespace std::chrono_literals;
using tb::test::ScriptedUserDialogs;

namespace {

// A feed on the loopback that answers every request with `respond`.
class FeedServer {
public:
    using Responder = std::function<void(QTcpSocket&)>;

    FeedServer()
    {
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost, 0));
        QObject::connect(&server, &QTcpServer::newConnection, &server, [this] {
            while (QTcpSocket* socket = server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    request += socket->readAll();
                    if (request.contains("\r\n\r\n")) {
                        request.clear();
                        ++requests;
                        respond(*socket);
                    }
                });
            }
        });
    }

    QString url() const { return QStringLiteral("http://127.0.0.1:%1/feed.json").arg(server.serverPort()); }

    Responder respond;
    int requests = 0;

private:
    QTcpServer server;
    QByteArray request;
};

QByteArray head(const QByteArray& status, qint64 length)
{
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(length) +
           "\r\nConnection: close\r\n\r\n";
}

FeedServer::Responder answer(const QByteArray& body, const QByteArray& status = "200 OK")
{
    return [=](QTcpSocket& socket) {
        socket.write(head(status, body.size()) + body);
        socket.disconnectFromHost();
    };
}

const QByteArray newer = R"({"version": "9.0.0", "url": "https://example.org/download", "notes": "Faster grids."})";

struct UpdaterTest : ::testing::Test {
    FeedServer server;
    ManualScheduler scheduler;
    ScriptedUserDialogs dialogs;
    QStringList printed;
    QList<QUrl> opened;

    std::unique_ptr<UpdaterControllerWrapper> makeUpdater(const QString& feed, std::chrono::milliseconds timeout = 5s)
    {
        return std::make_unique<UpdaterControllerWrapper>(
            feed, scheduler, dialogs, QStringLiteral("1.2.0"), timeout,
            [this](const QUrl& page) { opened.append(page); }, [this](const QString& line) { printed.append(line); });
    }

    static bool finished(const UpdaterControllerWrapper& updater)
    {
        return QTest::qWaitFor([&] { return !updater.isChecking(); }, 10000);
    }
};

} // namespace

// Each kind of server answer, asked for by the user and met by the background check.
TEST_F(UpdaterTest, EveryServerAnswerEndsInItsAlertAndConsoleLine)
{
    enum class Outcome { Offer, UpToDate, Failure };
    struct Case {
        const char* name;
        FeedServer::Responder respond;
        Outcome outcome;
        QString says; // in the alert, and in the console line when there is one
        std::chrono::milliseconds timeout = 5s;
    };
    const QByteArray big(UpdaterControllerWrapper::maximumFeedBytes + 10, ' ');
    const std::vector<Case> cases{
        {"newer", answer(newer), Outcome::Offer, QStringLiteral("9.0.0")},
        {"equal", answer(R"({"version": "1.2.0", "url": "https://example.org/d"})"), Outcome::UpToDate,
         QStringLiteral("Tallowbrook 1.2.0 is up to date.")},
        {"malformed", answer("{\"version\": \"9.0\""), Outcome::Failure, QStringLiteral("not JSON")},
        {"version as number", answer(R"({"version": 9, "url": "https://example.org/d"})"), Outcome::Failure,
         QStringLiteral("\"version\"")},
        {"local url", answer(R"({"version": "9.0", "url": "file:///usr/bin/xterm"})"), Outcome::Failure,
         QStringLiteral("file:///usr/bin/xterm")},
        {"404", answer("{}", "404 Not Found"), Outcome::Failure, QStringLiteral("HTTP status 404")},
        {"declared oversize", [](QTcpSocket& socket) { socket.write(head("200 OK", 2 << 20)); }, Outcome::Failure,
         QStringLiteral("larger than 1 MiB")},
        {"undeclared oversize",
         [&big](QTcpSocket& socket) {
             socket.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n{\"notes\": \"" + big);
             socket.disconnectFromHost();
         },
         Outcome::Failure, QStringLiteral("larger than 1 MiB")},
        {"never answers", [](QTcpSocket&) {}, Outcome::Failure, QStringLiteral("no answer"), 300ms},
        {"closed mid-body",
         [](QTcpSocket& socket) {
             socket.write(head("200 OK", 500) + R"({"version": "9.0.0",)");
             socket.disconnectFromHost();
         },
         Outcome::Failure, QStringLiteral("closed before")},
    };

    for (const Case& c : cases) {
        for (const bool userAsked : {true, false}) {
            SCOPED_TRACE(std::string(c.name) + (userAsked ? " on demand" : " in the background"));
            server.respond = c.respond;
            dialogs.prompts.clear();
            printed.clear();
            opened.clear();
            auto updater = makeUpdater(server.url(), c.timeout);
            if (userAsked)
                updater->checkForUpdates();
            else
                scheduler.advance(UpdaterControllerWrapper::firstCheckDelay);
            ASSERT_TRUE(updater->isChecking());
            ASSERT_TRUE(finished(*updater));

            const bool offer = c.outcome == Outcome::Offer;
            ASSERT_EQ(dialogs.prompts.size(), userAsked || offer ? 1 : 0);
            if (!dialogs.prompts.isEmpty()) {
                const auto& alert = dialogs.prompts[0];
                EXPECT_EQ(alert.style, c.outcome == Outcome::Failure ? AlertStyle::Warning : AlertStyle::Information);
                EXPECT_EQ(alert.title, offer ? "Update Available" : "Check for Updates");
                EXPECT_EQ(alert.buttons, (offer ? QStringList{"Download", "Later"} : QStringList{"OK"}));
                EXPECT_TRUE(alert.text.contains(c.says)) << alert.text.toStdString();
            }
            const QString line = offer                           ? "Updater will install update: "
                                 : c.outcome == Outcome::Failure ? "Updater did abort with error: "
                                                                 : "";
            ASSERT_EQ(printed.size(), line.isEmpty() ? 0 : 1);
            if (!line.isEmpty()) {
                EXPECT_TRUE(printed[0].startsWith(line) && printed[0].contains(c.says)) << printed[0].toStdString();
            }
            EXPECT_EQ(opened,
                      offer ? QList<QUrl>{QUrl(QStringLiteral("https://example.org/download"))} : QList<QUrl>{});
        }
    }
}

// Background checks come on the schedule, one at a time, and tell of a version once.
TEST_F(UpdaterTest, BackgroundChecksRepeatDailyAndOfferEachVersionOnce)
{
    server.respond = answer(newer);
    auto updater = makeUpdater(server.url());
    dialogs.questionAnswers = {{1, false, false}}; // "Later"
    scheduler.advance(UpdaterControllerWrapper::firstCheckDelay - 1);
    EXPECT_FALSE(updater->isChecking());
    scheduler.advance(1);
    ASSERT_TRUE(updater->isChecking());
    updater->checkForUpdates(); // joins the running check
    ASSERT_TRUE(finished(*updater));
    EXPECT_EQ(server.requests, 1);
    ASSERT_EQ(dialogs.prompts.size(), 1) << "the user asked during the check and hears of it once";
    EXPECT_EQ(dialogs.prompts[0].text,
              QStringLiteral("Tallowbrook 9.0.0 is available. You have 1.2.0.\n\nFaster grids."));
    EXPECT_TRUE(printed.isEmpty()) << "Later downloads nothing";
    EXPECT_TRUE(opened.isEmpty());

    scheduler.advance(UpdaterControllerWrapper::checkInterval);
    ASSERT_TRUE(finished(*updater));
    EXPECT_EQ(server.requests, 2);
    EXPECT_EQ(dialogs.prompts.size(), 1) << "the same version is not offered again";

    // A newer one is; and the user asking always hears the answer.
    server.respond = answer(R"({"version": "9.1", "url": "https://example.org/d"})");
    scheduler.advance(UpdaterControllerWrapper::checkInterval);
    ASSERT_TRUE(finished(*updater));
    updater->checkForUpdates();
    ASSERT_TRUE(finished(*updater));
    ASSERT_EQ(dialogs.prompts.size(), 3);
    EXPECT_TRUE(dialogs.prompts[1].text.startsWith(QStringLiteral("Tallowbrook 9.1 is available")));
    EXPECT_EQ(dialogs.prompts[2].text, dialogs.prompts[1].text);
    EXPECT_FALSE(updater->isUpdateAvailable());

    // An on-demand request during a background one makes the running one report to the user.
    server.respond = answer(R"({"version": "1.2.0", "url": "https://example.org/d"})");
    scheduler.advance(UpdaterControllerWrapper::checkInterval);
    updater->checkForUpdates();
    ASSERT_TRUE(finished(*updater));
    EXPECT_EQ(server.requests, 5);
    EXPECT_EQ(dialogs.prompts.last().text, QStringLiteral("Tallowbrook 1.2.0 is up to date."));
}

// Without a feed the commands point at the package manager; a broken address is reported at
// start and then explained by the commands, with no network activity either way.
TEST_F(UpdaterTest, WithoutAUsableFeedNothingIsFetched)
{
    auto none = makeUpdater(QString());
    none->checkForUpdates();
    ASSERT_EQ(dialogs.prompts.size(), 1);
    EXPECT_EQ(dialogs.prompts[0].style, AlertStyle::Information);
    EXPECT_EQ(dialogs.prompts[0].title, QStringLiteral("Check for Updates"));
    EXPECT_EQ(dialogs.prompts[0].text,
              QStringLiteral("Updates for Tallowbrook come from the system's package manager."));
    EXPECT_EQ(dialogs.prompts[0].buttons, QStringList{"OK"});
    EXPECT_TRUE(printed.isEmpty());

    for (const char* broken : {"ht!tp://example.org/feed", "feed.json", "ftp://example.org/feed", "https://"}) {
        SCOPED_TRACE(broken);
        printed.clear();
        auto updater = makeUpdater(QString::fromLatin1(broken));
        ASSERT_EQ(printed.size(), 1);
        EXPECT_TRUE(printed[0].startsWith(QStringLiteral("Error starting updater: ")));
        updater->checkForUpdates();
        EXPECT_EQ(dialogs.prompts.last().style, AlertStyle::Warning);
        EXPECT_FALSE(updater->isChecking());
        EXPECT_TRUE(updater->findChildren<QNetworkAccessManager*>().isEmpty());
    }

    EXPECT_EQ(scheduler.pendingCount(), 0) << "no background check is armed";
    EXPECT_TRUE(none->findChildren<QNetworkAccessManager*>().isEmpty());
}

using UpdaterButtonTest = test::ShellFixture;

TEST_F(UpdaterButtonTest, TheButtonRecordsItsEventAndThenChecks)
{
    ContentView& window = openWindow();
    auto* button = test::named<QPushButton>(window, QStringLiteral("Check for updates"));
    ASSERT_NE(button, nullptr);
    button->click();
    const RecordingAnalytics::Event expected{QStringLiteral("check_for_updates_clicked"),
                                             {{QStringLiteral("version"), QString::fromLatin1(appVersion)}}};
    EXPECT_TRUE(analytics.events().contains(expected));
    ASSERT_FALSE(dialogs.prompts.isEmpty());
    EXPECT_EQ(dialogs.prompts.last().text,
              QStringLiteral("Updates for Tallowbrook come from the system's package manager."));
}
