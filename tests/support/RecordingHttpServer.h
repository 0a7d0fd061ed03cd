#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTcpServer>

#include <utility>

class QTcpSocket;

namespace tb::test {

// A small HTTP/1.1 server on 127.0.0.1 for tests: it records every request and answers from a
// script. The port is chosen by the system and kept across stop() and start(), so a client can
// find the server gone and back at the same address. Each answer closes its connection.
//
// Wait for requests with QSignalSpy(&server, &RecordingHttpServer::requestReceived).wait() or
// QTest::qWaitFor([&] { return server.requests().size() == n; }).
class RecordingHttpServer final : public QObject {
    Q_OBJECT
public:
    struct Request {
        QByteArray method; // "GET", "POST"
        QString path;      // "/i"
        // What the client sent as its query: the URL's query for GET, the body otherwise.
        QByteArray query;
        QByteArray body;
        // The query's pairs in order, decoded ("+" as a space, percent escapes).
        QList<std::pair<QString, QString>> parameters;

        QStringList keys() const;
        // The first value of key, or a null string.
        QString value(const QString& key) const;
    };

    struct Reply {
        enum class Kind {
            Answer, // status and body
            Hold,   // no answer until release()
            Close,  // the connection is closed without an answer
        };
        Kind kind = Kind::Answer;
        int status = 200;
        QByteArray body = R"({"result":"Success"})";

        static Reply answer(int status, QByteArray body) { return Reply{Kind::Answer, status, std::move(body)}; }
        static Reply hold() { return Reply{Kind::Hold, 0, {}}; }
        static Reply close() { return Reply{Kind::Close, 0, {}}; }
    };

    // Listens at once; isListening() tells whether that worked.
    explicit RecordingHttpServer(QObject* parent = nullptr);
    ~RecordingHttpServer() override;

    // "http://127.0.0.1:<port>", without a trailing slash.
    QString url() const;
    quint16 port() const { return listeningPort; }
    bool isListening() const { return server.isListening(); }

    // Stops listening and drops every open connection, held ones included.
    void stop();
    // Listens again on the same port.
    bool start();

    // The answer for requests the script has nothing for; at first 200 {"result":"Success"}.
    void setDefaultReply(const Reply& reply) { defaultReply = reply; }
    // Answers for the next requests, in order, before the default takes over again.
    void script(const QList<Reply>& replies) { scripted += replies; }
    // Answers every held request with reply, or with 200 {"result":"Success"}.
    void release(const Reply& reply);
    void release();
    int heldCount() const;

    const QList<Request>& requests() const { return recorded; }
    void clearRequests() { recorded.clear(); }

Q_SIGNALS:
    // A request has been recorded at requests()[index]; its answer follows.
    void requestReceived(int index);

private:
    void accept();
    void read(QTcpSocket* socket);
    static void answer(QTcpSocket* socket, const Reply& reply);

    QTcpServer server;
    quint16 listeningPort = 0;
    Reply defaultReply;
    QList<Reply> scripted;
    QList<Request> recorded;
    QList<QPointer<QTcpSocket>> connections;
    QList<QPointer<QTcpSocket>> held;
};

} // namespace tb::test
