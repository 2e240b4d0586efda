// The Extractor's file list at 100,000 rows: what the model holds per row beyond the names, and the
// longest single step of showing it in real views (offscreen): setting the model, the first paint,
// scrolling to the end and painting, and re-sorting by name both ways and painting.
//
//   listing_view_bench [--rows N] [--runs N]   (other arguments, such as Google Benchmark's, are ignored)
//
// Times are medians of the runs, wall and CPU (user + system of the whole process) side by side, so
// that a busy machine shows as wall time well above CPU time. Memory is the heap in use (mallinfo2)
// before and after, so it counts every allocation the model and the view make.

#include "pod/pod_directory.h"
#include "pod/widgets/listing_model.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QTableView>
#include <QTreeView>

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

// Small blocks in use plus the large ones the allocator maps on their own.
size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

double cpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Names as archives hold them: a few folders, mixed lengths, not in name order.
korvel::PodDirectory makeListing(int rows) {
    static const char* const folders[] = {"ART\\", "MODELS\\TRUCKS\\", "SOUND\\", "", "WORLD\\TRACKS\\DESERT\\"};
    static const char* const kinds[] = {".RAW", ".BIN", ".WAV", ".SIT", ".TRK", ".ACT"};
    korvel::PodDirectory listing;
    listing.fileName = "BENCH.POD";
    listing.entries.reserve(static_cast<size_t>(rows));
    quint32 mixer = 2463534242u;
    qint32 start = 4 + 80 + 4;
    for (int i = 0; i < rows; ++i) {
        mixer ^= mixer << 13;
        mixer ^= mixer >> 17;
        mixer ^= mixer << 5;
        const std::string name = std::string(folders[mixer % 5]) + "FILE" + std::to_string(mixer % 1000000u) + "_" +
                                 std::to_string(i) + kinds[(mixer >> 8) % 6];
        const qint32 size = static_cast<qint32>(mixer % 50000u);
        listing.entries.add(name, size, start);
        start += size;
    }
    return listing;
}

struct Step {
    const char* name;
    std::vector<double> wall, cpu;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

void timed(Step& step, const std::function<void()>& work) {
    QElapsedTimer wall;
    const double cpu0 = cpuMs();
    wall.start();
    work();
    step.wall.push_back(double(wall.nsecsElapsed()) / 1e6);
    step.cpu.push_back(cpuMs() - cpu0);
}

// One run on a fresh view of type View; fills the steps in order.
template <typename View>
void runView(const korvel::PodDirectory& listing, std::vector<Step>& steps, size_t& viewBytes) {
    View view;
    view.resize(800, 600);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.setSelectionMode(QAbstractItemView::ExtendedSelection);
    if constexpr (std::is_same_v<View, QTableView>) {
        // As the Extractor sets its list up: fixed row heights, no grid.
        view.verticalHeader()->hide();
        view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        view.verticalHeader()->setDefaultSectionSize(view.fontMetrics().height() + 4);
        view.setShowGrid(false);
        view.setWordWrap(false);
    } else {
        view.setUniformRowHeights(true);
        view.setRootIsDecorated(false);
        view.setItemsExpandable(false);
    }
    view.show();
    QApplication::processEvents();

    korvel::ListingModel model;
    model.setListing(listing, false);
    const size_t before = heapInUse();
    size_t s = 0;
    timed(steps[s++], [&] { view.setModel(&model); });
    timed(steps[s++], [&] {
        view.viewport()->repaint();
        QApplication::processEvents();
    });
    viewBytes = heapInUse() - before;
    timed(steps[s++], [&] {
        view.scrollToBottom();
        view.viewport()->repaint();
        QApplication::processEvents();
    });
    timed(steps[s++], [&] {
        view.sortByColumn(korvel::ListingModel::NameColumn, Qt::AscendingOrder);
        view.viewport()->repaint();
        QApplication::processEvents();
    });
    timed(steps[s++], [&] {
        view.sortByColumn(korvel::ListingModel::NameColumn, Qt::DescendingOrder);
        view.viewport()->repaint();
        QApplication::processEvents();
    });
    view.setModel(nullptr);
}

template <typename View> void report(const char* title, const korvel::PodDirectory& listing, int rows, int runs) {
    std::vector<Step> steps = {{"setModel", {}, {}},
                               {"first paint", {}, {}},
                               {"scroll to the end + paint", {}, {}},
                               {"sort by name + paint", {}, {}},
                               {"sort descending + paint", {}, {}}};
    size_t viewBytes = 0;
    for (int run = 0; run < runs; ++run)
        runView<View>(listing, steps, viewBytes);
    double longest = 0;
    std::printf("\n%s, %d rows, median of %d runs\n\n| step | wall ms | CPU ms |\n|---|---:|---:|\n", title, rows,
                runs);
    for (const Step& step : steps) {
        std::printf("| %s | %.1f | %.1f |\n", step.name, median(step.wall), median(step.cpu));
        longest = std::max(longest, median(step.wall));
    }
    std::printf("\nlongest step %.1f ms wall; the view's own memory after the first paint: %.1f bytes a row\n", longest,
                double(viewBytes) / rows);
}

} // namespace

int main(int argc, char** argv) {
    int rows = 100000, runs = 5;
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--rows") == 0)
            rows = std::max(1, std::atoi(argv[++i]));
        else if (std::strcmp(argv[i], "--runs") == 0)
            runs = std::max(1, std::atoi(argv[++i]));
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    // The model's own cost: the listing moved in, the row order beside it.
    const size_t start = heapInUse();
    size_t namesBytes = 0, modelBytes = 0;
    {
        korvel::PodDirectory listing = makeListing(rows);
        for (size_t i = 0; i < listing.entries.size(); ++i)
            namesBytes += listing.entries.nameAt(i).size();
        korvel::ListingModel model;
        model.setListing(std::move(listing), false);
        model.sort(korvel::ListingModel::NameColumn, Qt::AscendingOrder);
        modelBytes = heapInUse() - start;
    }
    std::printf("ListingModel, %d rows: %.1f bytes a row in all, %.1f bytes a row of names, %.1f bytes a row "
                "beyond the names\n",
                rows, double(modelBytes) / rows, double(namesBytes) / rows, double(modelBytes - namesBytes) / rows);

    const korvel::PodDirectory listing = makeListing(rows);
    report<QTableView>("QTableView (as the Extractor sets it up)", listing, rows, runs);
    report<QTreeView>("QTreeView (uniform row heights)", listing, rows, runs);
    return 0;
}
