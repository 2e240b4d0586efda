#include "loopback_http_server.h"
#include "tracklist/track_list_download.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::LoopbackHttpServer;
using namespace std::chrono_literals;

namespace {

// The downloads need an application object for their event loops.
void ensureApplication() {
    static int argc = 1;
    static char name[] = "tracklist_tests";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance())
        new QCoreApplication(argc, argv);
}

// Runs the event loop until `done` holds or `ms` pass; returns `done`.
template <typename Done> bool waitFor(Done done, int ms) {
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return done();
}

} // namespace

TEST(TrackListDownload, fetchesTheBodyOfAGoodReply) {
    ensureApplication();
    LoopbackHttpServer server("QXMTL$A|Rumble|a.zip");
    ASSERT_TRUE(server.listening());
    const TrackListReply reply = fetchTrackList(server.url(), 5s);
    EXPECT_TRUE(reply.ok) << reply.error.toStdString();
    EXPECT_EQ(reply.body, "QXMTL$A|Rumble|a.zip");
    EXPECT_EQ(server.requests(), 1);
}

TEST(TrackListDownload, deliversUnmarkedAndEmptyBodiesForTheUpdateToReject) {
    ensureApplication();
    LoopbackHttpServer unmarked("<html>moved</html>");
    const TrackListReply first = fetchTrackList(unmarked.url(), 5s);
    ASSERT_TRUE(first.ok);
    EXPECT_EQ(first.body, "<html>moved</html>");
    LoopbackHttpServer empty("");
    const TrackListReply second = fetchTrackList(empty.url(), 5s);
    ASSERT_TRUE(second.ok);
    EXPECT_TRUE(second.body.isEmpty());
}

TEST(TrackListDownload, silentServerEndsInFailureWhenTheTimeRunsOut) {
    ensureApplication();
    LoopbackHttpServer server("", /*silent=*/true);
    QElapsedTimer clock;
    clock.start();
    const TrackListReply reply = fetchTrackList(server.url(), 300ms);
    EXPECT_FALSE(reply.ok);
    EXPECT_FALSE(reply.error.isEmpty());
    EXPECT_GE(clock.elapsed(), 250);
    EXPECT_LT(clock.elapsed(), 5000);
    EXPECT_EQ(server.connections(), 1);
}

TEST(TrackListDownload, refusedConnectionFailsAtOnce) {
    ensureApplication();
    QElapsedTimer clock;
    clock.start();
    const TrackListReply reply = fetchTrackList(LoopbackHttpServer::refusingUrl(), 10s);
    EXPECT_FALSE(reply.ok);
    EXPECT_LT(clock.elapsed(), 5000);
}

TEST(TrackListDownload, runsWithoutBlockingAndEmitsFinishedOnce) {
    ensureApplication();
    LoopbackHttpServer server("QXMTL$");
    TrackListDownload download;
    int finished = 0;
    QObject::connect(&download, &TrackListDownload::finished, [&] { ++finished; });
    download.start(server.url(), 5s);
    // start() returns before anything was transferred; the event loop does the rest.
    EXPECT_TRUE(download.isRunning());
    EXPECT_EQ(finished, 0);
    ASSERT_TRUE(waitFor([&] { return finished == 1; }, 5000));
    EXPECT_FALSE(download.isRunning());
    EXPECT_TRUE(download.reply().ok);
    EXPECT_EQ(download.reply().body, "QXMTL$");
    waitFor([] { return false; }, 100);
    EXPECT_EQ(finished, 1);

    // A download that is aborted reports failure, and a new one can start afterwards.
    LoopbackHttpServer silent("", true);
    download.start(silent.url(), 5s);
    QTimer::singleShot(50, &download, &TrackListDownload::abort);
    ASSERT_TRUE(waitFor([&] { return finished == 2; }, 5000));
    EXPECT_FALSE(download.reply().ok);
}

TEST(TrackListDownload, refusesAnOversizedDocument) {
    ensureApplication();
    LoopbackHttpServer server(QByteArray(TrackListDownload::kMaxBytes + 10, 'x'));
    const TrackListReply reply = fetchTrackList(server.url(), 10s);
    EXPECT_FALSE(reply.ok);
    EXPECT_TRUE(reply.body.isEmpty());
}
