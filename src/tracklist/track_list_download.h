#pragma once

#include "platform/result.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <string>

class QNetworkAccessManager;
class QNetworkReply;

namespace korvel {

class Dialogs;
class SettingsStore;

// What a download of the track-list document gave: the body, or why there is none.
struct TrackListReply {
    bool ok = false;
    QByteArray body;
    QString error; // for logs and the command line's details; the user sees the fixed failure text
};

// Fetches the track-list document without blocking: start() returns at once and finished() is
// emitted once, when the body has arrived, the transfer failed, or the time allowed ran out.
class TrackListDownload : public QObject {
    Q_OBJECT
public:
    // Documents larger than this are refused; a track list is a few kilobytes.
    static constexpr qint64 kMaxBytes = qint64(1) << 20;

    explicit TrackListDownload(QObject* parent = nullptr);
    ~TrackListDownload() override;

    // Starts a download; a download still running is aborted first (without finished()).
    void start(const QUrl& url, std::chrono::milliseconds timeout);
    bool isRunning() const { return !m_reply.isNull(); }
    // Stops a running download; finished() reports it as failed.
    void abort();

    const TrackListReply& reply() const { return m_result; }

signals:
    void finished();

private:
    void onReadyRead();
    void onFinished();
    void fail(const QString& error);
    void discardReply();

    QNetworkAccessManager* m_manager;
    QPointer<QNetworkReply> m_reply;
    QTimer m_timer;
    QByteArray m_body;
    TrackListReply m_result;
};

// Fetches the document and waits for it in a local event loop (for the command line).
TrackListReply fetchTrackList(const QUrl& url, std::chrono::milliseconds timeout);

// The update's messages.
inline constexpr const char* kUpdateSucceededText = "Update completed successfully!";
inline constexpr const char* kUpdateFailedText = "Update failed! Please try again later.";

// Stores the list a downloaded document carries as "TrackList" in the program key. A failed
// transfer, a document without the mark or a list too long to read back from the store leaves the
// stored list as it was and gives the "Unexpected Error" failure with the update's failure text.
// Returns the stored value.
Result<std::string> storeTrackListReply(SettingsStore& store, const TrackListReply& reply);

// Shows the update's outcome: "Update completed successfully!" ("Information") or the failure.
void showTrackListUpdateOutcome(Dialogs& dialogs, const Result<std::string>& outcome);

} // namespace korvel
