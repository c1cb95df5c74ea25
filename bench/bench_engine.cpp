// Times the engine's operations in-process, the median of repeated runs, for
// bench/run.sh to set beside the standard tools. Usage:
//   bench_engine size DIR RUNS         the size estimate, no time limit
//   bench_engine size-limit DIR        entries counted within the 0.5 s limit
//   bench_engine list DIR RUNS         the flattened listing (folder style 1)
//   bench_engine menu DIR RUNS         the status menu's Shadow Desktop tree
// Prints "SECONDS [COUNT]".
#include "BackgroundFileListBuilder.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "FolderSize.h"
#include "LocalItemInfo.h"
#include "ShadowDesktopMenuBuilder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <algorithm>
#include <cstdio>

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

template <typename Work> double timeRuns(int runs, Work work)
{
    std::vector<double> seconds;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        seconds.push_back(double(timer.nsecsElapsed()) / 1e9);
    }
    return median(seconds);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() < 2)
        return 2;
    const QString what = args.at(0);
    const QString dir = args.at(1);
    const int runs = args.value(2, QStringLiteral("5")).toInt();
    LocalItemInfo itemInfo;
    const FolderSize size([] { return QDateTime::currentDateTimeUtc(); });

    if (what == u"size") {
        quint64 bytes = 0;
        const double seconds =
            timeRuns(runs, [&] { bytes = size.getFolderSize(dir, std::nullopt); });
        std::printf("%.6f %llu\n", seconds, static_cast<unsigned long long>(bytes));
    } else if (what == u"size-limit") {
        const quint64 entries = size.entriesWithinLimit(dir);
        std::printf("0.5 %llu\n", static_cast<unsigned long long>(entries));
    } else if (what == u"list") {
        auto view = std::make_shared<QuickFilterItem>();
        view->setFolderStyle(1);
        qsizetype count = 0;
        const double seconds = timeRuns(runs, [&] {
            BackgroundFileListBuilder builder(dir, view, QString(), dir, itemInfo);
            QEventLoop loop;
            QObject::connect(&builder, &BackgroundFileListBuilder::fileListCompleted, &loop,
                             [&](const QStringList &paths) {
                                 count = paths.size();
                                 loop.quit();
                             });
            builder.startBackgroundTask();
            loop.exec();
        });
        std::printf("%.6f %lld\n", seconds, static_cast<long long>(count));
    } else if (what == u"menu") {
        std::atomic<bool> abort{false};
        int entries = 0;
        const double seconds = timeRuns(runs, [&] {
            ShadowDesktopMenuBuilder builder(
                itemInfo, [](const QString &) { return true; }, abort);
            MenuEntry root;
            ShadowDesktopMenuBuilder::Registry registry;
            builder.buildShadowDesktopMenu(root, dir, registry, {}, 1);
            entries = int(root.submenu.size());
        });
        std::printf("%.6f %d\n", seconds, entries);
    } else {
        return 2;
    }
    return 0;
}
