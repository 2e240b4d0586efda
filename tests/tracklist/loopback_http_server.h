#pragma once

#include <QHash>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

namespace korvel::testing {

// A one-page HTTP server on 127.0.0.1: it answers every request with the same body or, when
// silent, accepts connections and never answers.
class LoopbackHttpServer {
public:
    explicit LoopbackHttpServer(QByteArray body, bool silent = false) : m_body(std::move(body)) {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this, silent] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                if (!silent) // a silent server keeps the socket open until it goes
                    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
        });
    }
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/tracklist.txt").arg(m_server.serverPort())); }

    // An address on 127.0.0.1 that nothing listens on (the port of a server just closed).
    static QUrl refusingUrl() {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        return QUrl(QStringLiteral("http://127.0.0.1:%1/tracklist.txt").arg(probe.serverPort()));
    }

private:
    void answer(QTcpSocket* socket) {
        QByteArray& request = m_pending[socket];
        request += socket->readAll();
        if (!request.contains("\r\n\r\n"))
            return;
        m_pending.remove(socket);
        socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\nContent-Length: " +
                      QByteArray::number(m_body.size()) + "\r\n\r\n" + m_body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QByteArray m_body;
    QHash<QTcpSocket*, QByteArray> m_pending;
};

} // namespace korvel::testing
