#include "pod/widgets/listing_model.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QPersistentModelIndex>
#include <QTableView>

#include <gtest/gtest.h>

using korvel::ListingModel;
using korvel::PodDirectory;
using korvel::PodEntry;

namespace {

PodDirectory listingOf(const std::vector<std::string>& names) {
    PodDirectory listing;
    listing.folder = "C:\\";
    listing.fileName = "A.POD";
    qint32 start = 100;
    for (const std::string& name : names) {
        listing.entries.push_back({name, 10, start, start + 10});
        start += 10;
    }
    listing.headerCount = static_cast<qint32>(names.size());
    return listing;
}

} // namespace

TEST(ListingModel, showsTheFourColumnsAndSortsByNameLikeTheExport) {
    ListingModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    PodDirectory listing = listingOf({"b.bin", "A.BIN", "c\\x.raw", "a.bin"});
    listing.entries[0].size = 1234567;
    listing.entries[0].end = listing.entries[0].start + 1234567;
    model.setListing(listing, false);

    ASSERT_EQ(model.columnCount(), 4);
    const QStringList headers{"Name", "Size (bytes)", "Start Position", "End Position"};
    for (int column = 0; column < 4; ++column)
        EXPECT_EQ(model.headerData(column, Qt::Horizontal).toString(), headers[column]);
    EXPECT_EQ(model.index(0, 0).data().toString(), "b.bin");
    EXPECT_EQ(model.index(0, 1).data().toString(), "1,234,567");
    EXPECT_EQ(model.index(0, 3).data().toString(), "1,234,667");

    // A selected row keeps its entry across a sort; equal names keep their directory order.
    const QPersistentModelIndex first(model.index(0, 2));
    model.sort(ListingModel::NameColumn);
    EXPECT_TRUE(model.isSorted());
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names << model.index(row, 0).data().toString();
    EXPECT_EQ(names, QStringList({"A.BIN", "a.bin", "b.bin", "c\\x.raw"}));
    EXPECT_EQ(first.row(), 2);
    EXPECT_EQ(first.column(), 2);
    EXPECT_EQ(model.index(2, 0).data(ListingModel::EntryRole).toInt(), 0);

    std::vector<std::string> expected;
    for (const PodEntry* entry : korvel::displayOrder(model.listing(), true))
        expected.push_back(entry->name);
    for (int row = 0; row < model.rowCount(); ++row)
        EXPECT_EQ(model.entryAt(row).name, expected[static_cast<size_t>(row)]);

    model.sort(ListingModel::SizeColumn); // other columns do not sort
    EXPECT_EQ(model.index(0, 0).data().toString(), "A.BIN");
    model.clear();
    EXPECT_EQ(model.rowCount(), 0);
}

TEST(ListingModel, aHundredThousandRowsListSortAndScrollQuickly) {
    std::vector<std::string> names;
    names.reserve(100000);
    for (int i = 0; i < 100000; ++i)
        names.push_back("FILE" + std::to_string((i * 7919) % 100000) + ".BIN");
    PodDirectory listing = listingOf(names);

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
