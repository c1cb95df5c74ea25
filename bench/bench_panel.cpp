// The drop-down panel over a large Shadow Desktop, offscreen, for bench/run.sh.
// The Shadow Desktop is pointed at TREE and the "All Contents" view lists every
// file under it (folder style 1). Usage:
//   bench_panel TREE [OPENINGS] [EXPECTED_ROWS]
// Each opening measures, with a 1 ms main-thread timer running throughout:
//   show      from setHasActivePanel(true) to the end of the window's first paint
//   complete  from setHasActivePanel(true) to fileListCompleted with every row in
//   stall     the longest gap between the timer's ticks until then (and 100 ms on)
// Then, with the listing in, keystrokes into the search field: phrases typed a
// character at a time and cleared again (select all, Backspace), each timed from
// the key event until the event loop has nothing left to do (the rows filtered,
// laid out again and repainted). Prints one "NAME VALUE" line
// each (seconds unless the name says otherwise): show, complete (medians of the
// openings), stall (the longest of all), keystroke-median, keystroke-worst,
// keystroke-clear-worst, rss-mb (VmRSS with the panel open on the listing),
// rss-base-mb (VmRSS of this process before the panel was made), rows.
#include "BenchEventLoop.h"
#include "BenchHome.h"
#include "BenchPanelHost.h"
#include "BenchPanelServices.h"
#include "BrevanoData.h"
#include "FileListModel.h"
#include "PaintCounter.h"
#include "PanelController.h"
#include "StallProbe.h"
#include "ui_Panel.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

double seconds(qint64 nsecs)
{
    return double(nsecs) / 1e9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double residentMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024;
    return 0;
}

struct Opening
{
    double show = 0;
    double complete = 0;
    double stall = 0;
    int rows = 0;
};

Opening openOnce(PanelController &panel, PaintCounter &windowPaints)
{
    Opening result;
    StallProbe probe;
    bool completed = false;
    const QMetaObject::Connection connection =
        QObject::connect(&panel, &PanelController::fileListCompleted, [&] {
            result.complete = probe.elapsedSeconds();
            result.rows = panel.model().rowCount();
            completed = true;
        });
    windowPaints.paints = 0;
    probe.start();
    panel.setHasActivePanel(true);
    // processEvents returns once the paint it delivered is drawn and flushed.
    BenchEventLoop::waitUntil(
        [&] { return windowPaints.paints > 0 && panel.window()->isVisible(); });
    result.show = probe.elapsedSeconds();
    BenchEventLoop::waitUntil([&] { return completed; });
    // A little longer, for whatever the last arrival set off (the rows' relayout).
    BenchEventLoop::waitUntil([] { return false; }, 100);
    QObject::disconnect(connection);
    result.stall = probe.longestSeconds();
    return result;
}

void close(PanelController &panel)
{
    panel.setHasActivePanel(false);
    BenchEventLoop::waitUntil([&] { return !panel.window()->isVisible(); });
}

struct Keystrokes
{
    std::vector<double> all;
    std::vector<double> clears;
};

void sendKey(QWidget *field, int key, Qt::KeyboardModifiers modifiers, const QString &text)
{
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(field, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QApplication::sendEvent(field, &release);
}

// One key into the search field that changes the phrase, timed until what it
// set off has run: the rows filtered, laid out and painted where they changed.
double keystroke(QWidget *field, PaintCounter &rowPaints, int key, const QString &text)
{
    BenchEventLoop::runUntilIdle(); // nothing left over from the last one
    rowPaints.paints = 0;
    QElapsedTimer clock;
    clock.start();
    sendKey(field, key, Qt::NoModifier, text);
    BenchEventLoop::runUntilIdle();
    return seconds(clock.nsecsElapsed());
}

Keystrokes typePhrases(PanelController &panel, PaintCounter &rowPaints, const QStringList &phrases,
                       int expectedRows)
{
    Keystrokes result;
    QWidget *field = panel.window()->ui().searchField;
    const bool verbose = qEnvironmentVariableIsSet("BENCH_VERBOSE");
    for (const QString &phrase : phrases) {
        for (const QChar c : phrase) {
            const double time = keystroke(field, rowPaints, c.toUpper().unicode(), QString(c));
            result.all.push_back(time);
            if (verbose)
                std::fprintf(stderr, "  '%s' %.4f s, %d rows, %d paints\n",
                             qPrintable(panel.window()->ui().searchField->text()), time,
                             panel.model().rowCount(), rowPaints.paints);
        }
        sendKey(field, Qt::Key_A, Qt::ControlModifier, QString()); // select all
        const double clear = keystroke(field, rowPaints, Qt::Key_Backspace, QString());
        result.all.push_back(clear);
        result.clears.push_back(clear);
        if (verbose)
            std::fprintf(stderr, "  cleared %.4f s, %d rows\n", clear, panel.model().rowCount());
        if (expectedRows > 0 && panel.model().rowCount() != expectedRows)
            std::fprintf(stderr, "clearing left %d rows\n", panel.model().rowCount());
    }
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    BenchPanelHost::quietOffscreenPlatform();
    const BenchHome home;
    if (!home.isValid())
        return 1;
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty())
        return 2;
    const QString tree = args.at(0);
    const int openings = std::max(1, args.value(1, QStringLiteral("3")).toInt());
    const int expectedRows = args.value(2, QStringLiteral("0")).toInt();
    const bool verbose = qEnvironmentVariableIsSet("BENCH_VERBOSE");

    BenchPanelServices services(tree);
    BrevanoData &data = services.data();
    // "All Contents", every file of the Shadow Desktop flattened.
    const auto &views = data.filterItems();
    if (views.isEmpty() || views.first()->getName() != u"All Contents")
        return 2;
    views.first()->setFolderStyle(1);

    const double rssBase = residentMegabytes();
    PanelController panel(services.panelServices(), services.host());
    PaintCounter windowPaints;
    panel.window()->installEventFilter(&windowPaints);
    PaintCounter rowPaints;
    panel.window()->ui().tableView->viewport()->installEventFilter(&rowPaints);

    std::vector<double> shows;
    std::vector<double> completes;
    double stall = 0;
    double rss = 0;
    int rows = 0;
    for (int i = 0; i < openings; ++i) {
        const Opening opening = openOnce(panel, windowPaints);
        if (verbose)
            std::fprintf(stderr,
                         "opening %d: shown %.4f s, complete %.4f s (%d rows), stall %.4f s\n",
                         i + 1, opening.show, opening.complete, opening.rows, opening.stall);
        shows.push_back(opening.show);
        completes.push_back(opening.complete);
        stall = std::max(stall, opening.stall);
        rows = opening.rows;
        if (expectedRows > 0 && rows != expectedRows) {
            std::fprintf(stderr, "listed %d rows, expected %d\n", rows, expectedRows);
            return 3;
        }
        if (i + 1 < openings)
            close(panel);
    }
    rss = residentMegabytes();

    const QStringList phrases = {QStringLiteral("file042"), QStringLiteral("99.t"),
                                 QStringLiteral("xyz"), QStringLiteral("file1"),
                                 QStringLiteral("7.txt")};
    const Keystrokes keys = typePhrases(panel, rowPaints, phrases, rows);

    std::printf("show %.6f\n", median(shows));
    std::printf("complete %.6f\n", median(completes));
    std::printf("stall %.6f\n", stall);
    std::printf("keystroke-median %.6f\n", median(keys.all));
    std::printf("keystroke-worst %.6f\n", *std::max_element(keys.all.begin(), keys.all.end()));
    std::printf("keystroke-clear-worst %.6f\n",
                *std::max_element(keys.clears.begin(), keys.clears.end()));
    std::printf("rss-mb %.1f\n", rss);
    std::printf("rss-base-mb %.1f\n", rssBase);
    std::printf("rows %d\n", rows);
    close(panel);
    return 0;
}
