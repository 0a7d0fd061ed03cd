#include "RecordingHttpServer.h"

#include <QTcpSocket>
#include <QUrl>

namespace tb::test {

namespace {

QString decoded(QByteArray text)
{
    text.replace('+', ' ');
    return QUrl::fromPercentEncoding(text);
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

} // namespace

QStringList RecordingHttpServer::Request::keys() const
{
    QStringList names;
    for (const auto& parameter : parameters)
        names.append(parameter.first);
    return names;
}

QString RecordingHttpServer::Request::value(const QString& key) const
{
    for (const auto& parameter : parameters)
        if (parameter.first == key)
            return parameter.second;
    return {};
}

RecordingHttpServer::RecordingHttpServer(QObject* parent) : QObject(parent)
{
    connect(&server, &QTcpServer::newConnection, this, &RecordingHttpServer::accept);
    if (server.listen(QHostAddress::LocalHost, 0))
        listeningPort = server.serverPort();
}

RecordingHttpServer::~RecordingHttpServer() { stop(); }

QString RecordingHttpServer::url() const { return QStringLiteral("http://127.0.0.1:%1").arg(listeningPort); }

void RecordingHttpServer::stop()
{
    server.close();
    held.clear();
    for (const QPointer<QTcpSocket>& socket : std::as_const(connections))
        if (socket)
            socket->abort();
    connections.clear();
}

bool RecordingHttpServer::start()
{
    return server.isListening() || server.listen(QHostAddress::LocalHost, listeningPort);
}

void RecordingHttpServer::release(const Reply& reply)
{
    const QList<QPointer<QTcpSocket>> waiting = std::exchange(held, {});
    for (const QPointer<QTcpSocket>& socket : waiting)
        if (socket)
            answer(socket, reply);
}

void RecordingHttpServer::release() { release(Reply()); }

int RecordingHttpServer::heldCount() const
{
    int count = 0;
    for (const QPointer<QTcpSocket>& socket : held)
        count += socket ? 1 : 0;
    return count;
}

void RecordingHttpServer::accept()
{
    while (QTcpSocket* socket = server.nextPendingConnection()) {
        socket->setParent(this);
        connections.append(socket);
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
    }
}

void RecordingHttpServer::read(QTcpSocket* socket)
{
    // The socket keeps what it has read until a whole request is there.
    QByteArray buffer = socket->property("buffer").toByteArray() + socket->readAll();
    socket->setProperty("buffer", buffer);
    const qsizetype headerEnd = buffer.indexOf("\r\n\r\n");
    if (headerEnd < 0)
        return;
    const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
    qsizetype contentLength = 0;
    for (const QByteArray& line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().toLower() == "content-length")
            contentLength = line.mid(colon + 1).trimmed().toLongLong();
    }
    if (buffer.size() < headerEnd + 4 + contentLength)
        return;
    socket->setProperty("buffer", QByteArray());
    // The connection closes after the answer, so anything after this request is ignored.
    disconnect(socket, &QTcpSocket::readyRead, this, nullptr);

    Request request;
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    request.method = requestLine.value(0);
    const QByteArray target = requestLine.value(1);
    const qsizetype question = target.indexOf('?');
    request.path = QString::fromLatin1(question < 0 ? target : target.left(question));
    request.body = buffer.mid(headerEnd + 4, contentLength);
    request.query = question < 0 ? request.body : target.mid(question + 1);
    for (const QByteArray& pair : request.query.split('&')) {
        if (pair.isEmpty())
            continue;
        const qsizetype equals = pair.indexOf('=');
        request.parameters.append(
            {decoded(equals < 0 ? pair : pair.left(equals)), equals < 0 ? QString() : decoded(pair.mid(equals + 1))});
    }
    recorded.append(request);

    const Reply reply = scripted.isEmpty() ? defaultReply : scripted.takeFirst();
    Q_EMIT requestReceived(int(recorded.size() - 1));
    if (reply.kind == Reply::Kind::Hold)
        held.append(socket);
    else
        answer(socket, reply);
}

void RecordingHttpServer::answer(QTcpSocket* socket, const Reply& reply)
{
    if (reply.kind == Reply::Kind::Close) {
        socket->abort();
        return;
    }
    if (reply.kind == Reply::Kind::Hold)
        return;
    socket->write("HTTP/1.1 " + QByteArray::number(reply.status) + ' ' + reasonPhrase(reply.status) +
                  "\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(reply.body.size()) +
                  "\r\nConnection: close\r\n\r\n" + reply.body);
    socket->disconnectFromHost();
}

} // namespace tb::test
