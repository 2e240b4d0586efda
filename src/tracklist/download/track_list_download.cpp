#include "tracklist/track_list_download.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace korvel {

TrackListDownload::TrackListDownload(QObject* parent) : QObject(parent), m_manager(new QNetworkAccessManager(this)) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this,
            [this] { fail(QStringLiteral("no answer within %1 ms").arg(m_timer.interval())); });
}

TrackListDownload::~TrackListDownload() {
    discardReply();
}

void TrackListDownload::start(const QUrl& url, std::chrono::milliseconds timeout) {
    discardReply();
    m_body.clear();
    m_result = {};
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = m_manager->get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, &TrackListDownload::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &TrackListDownload::onFinished);
    m_timer.start(timeout);
}

void TrackListDownload::abort() {
    if (isRunning())
        fail(QStringLiteral("the download was cancelled"));
}

void TrackListDownload::onReadyRead() {
    if (!m_reply)
        return;
    m_body += m_reply->readAll();
    if (m_body.size() > kMaxBytes)
        fail(QStringLiteral("the document is larger than %1 bytes").arg(kMaxBytes));
}

void TrackListDownload::onFinished() {
    if (!m_reply)
        return;
    m_timer.stop();
    m_body += m_reply->readAll();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_reply->error() != QNetworkReply::NoError) {
        fail(m_reply->errorString());
        return;
    }
    if (status != 0 && (status < 200 || status > 299)) {
        fail(QStringLiteral("the server answered with status %1").arg(status));
        return;
    }
    if (m_body.size() > kMaxBytes) {
        fail(QStringLiteral("the document is larger than %1 bytes").arg(kMaxBytes));
        return;
    }
    discardReply();
    m_result.ok = true;
    m_result.body = std::move(m_body);
    m_body.clear();
    emit finished();
}

void TrackListDownload::fail(const QString& error) {
    m_timer.stop();
    discardReply();
    m_body.clear();
    m_result = {};
    m_result.error = error;
    emit finished();
}

void TrackListDownload::discardReply() {
    if (!m_reply)
        return;
    QNetworkReply* reply = m_reply;
    m_reply = nullptr;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

TrackListReply fetchTrackList(const QUrl& url, std::chrono::milliseconds timeout) {
    TrackListDownload download;
    QEventLoop loop;
    QObject::connect(&download, &TrackListDownload::finished, &loop, &QEventLoop::quit);
    download.start(url, timeout);
    if (download.isRunning())
        loop.exec();
    return download.reply();
}

} // namespace korvel
