#include "pod/widgets/listing_model.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QTableView>

#include <gtest/gtest.h>

using korvel::ListingModel;
using korvel::PodDirectory;

TEST(ListingModel, aHundredThousandRowsListSortAndScrollQuickly) {
    PodDirectory listing;
    for (qint32 i = 0; i < 100000; ++i)
        listing.entries.push_back(
            {"FILE" + std::to_string((i * 7919) % 100000) + ".BIN", 10, 100 + 10 * i, 110 + 10 * i});
    listing.headerCount = 100000;

    ListingModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QTableView view;
    view.setModel(&model);
    view.resize(600, 400);
    view.show();

    QElapsedTimer clock;
    clock.start();
    model.setListing(std::move(listing), true);
    view.scrollToBottom();
    view.scrollToTop();
    view.repaint();
    EXPECT_LT(clock.elapsed(), 5000); // a Debug build on a busy machine; well under a second in Release
    ASSERT_EQ(model.rowCount(), 100000);
    EXPECT_EQ(model.index(0, 0).data().toString(), "FILE0.BIN");
    EXPECT_EQ(model.index(99999, 0).data().toString(), "FILE99999.BIN");
}
