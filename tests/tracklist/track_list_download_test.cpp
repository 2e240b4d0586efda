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

class TrackListDownloadTest : public ::testing::Test {
protected:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "tracklist_tests";
        static char* argv[] = {name, nullptr};
        if (!QCoreApplication::instance())
            new QCoreApplication(argc, argv);
    }
    // Runs the event loop until `done` holds or `ms` pass.
    template <typename Done> static bool waitFor(Done done, int ms) {
        QElapsedTimer clock;
        clock.start();
        while (!done() && clock.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        return done();
    }
};

} // namespace

TEST_F(TrackListDownloadTest, deliversEveryBodyTheServerSendsUnmarkedAndEmptyOnesIncluded) {
    for (const QByteArray& body :
         {QByteArray("QXMTL$A|Rumble|a.zip"), QByteArray("<html>moved</html>"), QByteArray()}) {
        LoopbackHttpServer server(body);
        const TrackListReply reply = fetchTrackList(server.url(), 5s);
        EXPECT_TRUE(reply.ok) << reply.error.toStdString();
        EXPECT_EQ(reply.body, body);
        EXPECT_EQ(server.requests(), 1);
    }
}

TEST_F(TrackListDownloadTest, silentServerTimesOutAndRefusedConnectionFailsAtOnce) {
    LoopbackHttpServer silent("", /*silent=*/true);
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(fetchTrackList(silent.url(), 300ms).ok);
    EXPECT_GE(clock.elapsed(), 250);
    EXPECT_LT(clock.elapsed(), 5000);
    EXPECT_EQ(silent.connections(), 1);

    clock.restart();
    const TrackListReply refused = fetchTrackList(LoopbackHttpServer::refusingUrl(), 10s);
    EXPECT_FALSE(refused.ok);
    EXPECT_FALSE(refused.error.isEmpty());
    EXPECT_LT(clock.elapsed(), 5000);

    LoopbackHttpServer huge(QByteArray(TrackListDownload::kMaxBytes + 10, 'x'));
    EXPECT_FALSE(fetchTrackList(huge.url(), 10s).ok);
}

TEST_F(TrackListDownloadTest, runsInTheEventLoopAndEmitsFinishedOncePerDownload) {
    LoopbackHttpServer server("QXMTL$");
    TrackListDownload download;
    int finished = 0;
    QObject::connect(&download, &TrackListDownload::finished, [&] { ++finished; });
    download.start(server.url(), 5s);
    EXPECT_TRUE(download.isRunning()); // start() returned before anything was transferred
    ASSERT_TRUE(waitFor([&] { return finished == 1; }, 5000));
    EXPECT_TRUE(download.reply().ok);
    EXPECT_EQ(download.reply().body, "QXMTL$");
    waitFor([] { return false; }, 100);
    EXPECT_EQ(finished, 1);

    // An aborted download reports failure.
    LoopbackHttpServer silent("", true);
    download.start(silent.url(), 5s);
    QTimer::singleShot(50, &download, &TrackListDownload::abort);
    ASSERT_TRUE(waitFor([&] { return finished == 2; }, 5000));
    EXPECT_FALSE(download.reply().ok);
}
