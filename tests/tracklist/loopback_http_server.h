#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <memory>

namespace korvel::testing {

// A one-page HTTP server on 127.0.0.1 for download tests: it answers every request with the same
// body, or, when silent, accepts connections and never answers.
class LoopbackHttpServer {
public:
    explicit LoopbackHttpServer(QByteArray body, bool silent = false) : m_body(std::move(body)), m_silent(silent) {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection()) {
                ++m_connections;
                if (m_silent)
                    continue; // kept open by the server until it goes
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
            }
        });
    }

    bool listening() const { return m_server.isListening(); }
    QUrl url(const QString& path = QStringLiteral("/tracklist.txt")) const {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
    }
    int connections() const { return m_connections; }
    int requests() const { return m_requests; }

    // An address on 127.0.0.1 that nothing listens on (the port of a server just closed).
    static QUrl refusingUrl() {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        const quint16 port = probe.serverPort();
        probe.close();
        return QUrl(QStringLiteral("http://127.0.0.1:%1/tracklist.txt").arg(port));
    }

private:
    void answer(QTcpSocket* socket) {
        QByteArray& request = m_pending[socket];
        request += socket->readAll();
        if (!request.contains("\r\n\r\n"))
            return;
        m_pending.remove(socket);
        ++m_requests;
        socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\nContent-Length: " +
                      QByteArray::number(m_body.size()) + "\r\n\r\n" + m_body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QByteArray m_body;
    bool m_silent;
    int m_connections = 0;
    int m_requests = 0;
    QHash<QTcpSocket*, QByteArray> m_pending;
};

} // namespace korvel::testing
