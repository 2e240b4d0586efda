#include "loopback_http_server.h"
#include "tracklist/track_list_download.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace korvel;
using korvel::testing::LoopbackHttpServer;
using namespace std::chrono_literals;

namespace {

// The network layer needs an application object.
void ensureApplication() {
    static int argc = 1;
    static char name[] = "tracklist_tests";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance())
        new QCoreApplication(argc, argv);
}

} // namespace

TEST(TrackListDownload, deliversEveryBodyTheServerSendsUnmarkedAndEmptyOnesIncluded) {
    ensureApplication();
    for (const QByteArray& body :
         {QByteArray("QXMTL$A|Rumble|a.zip"), QByteArray("<html>moved</html>"), QByteArray()}) {
        LoopbackHttpServer server(body);
        const TrackListReply reply = fetchTrackList(server.url(), 5s);
        EXPECT_TRUE(reply.ok) << reply.error.toStdString();
        EXPECT_EQ(reply.body, body);
    }
    LoopbackHttpServer huge(QByteArray(TrackListDownload::kMaxBytes + 10, 'x'));
    EXPECT_FALSE(fetchTrackList(huge.url(), 10s).ok);
}

TEST(TrackListDownload, silentServerTimesOutAndRefusedConnectionFailsAtOnce) {
    ensureApplication();
    LoopbackHttpServer silent("", /*silent=*/true);
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(fetchTrackList(silent.url(), 300ms).ok);
    EXPECT_GE(clock.elapsed(), 250);
    EXPECT_LT(clock.elapsed(), 5000);
    clock.restart();
    const TrackListReply refused = fetchTrackList(LoopbackHttpServer::refusingUrl(), 10s);
    EXPECT_FALSE(refused.ok);
    EXPECT_FALSE(refused.error.isEmpty());
    EXPECT_LT(clock.elapsed(), 5000);
}
