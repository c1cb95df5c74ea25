// The panel's thumbnails over a folder of large photographs, offscreen, for
// bench/run.sh, and what they are measured against. Usage:
//   bench_thumbnails make-images FOLDER COUNT
//       COUNT JPEG images of 2400x1600 (a hundred different pictures)
//   bench_thumbnails panel FOLDER CACHE [no-scroll]
//       FOLDER as the Shadow Desktop in "Images", every row with its picture
//       (icon style 1, 128-point rows), the window 400x700, the shared
//       thumbnail cache in CACHE/thumbnails; opened once before with type
//       icons only, as in an application that has been running. Prints, with
//       a 1 ms main-thread timer running throughout:
//         shown         from setHasActivePanel(true) until the rows' first
//                       paint begins (with type icons; they ask for pictures)
//         visible       from setHasActivePanel(true) until every row in sight
//                       has been painted with its picture
//         pictures      from shown to visible
//         visible-rows  how many rows that was
//         visible-files their paths, separated by commas
//         open-stall    the longest gap between the timer's ticks meanwhile
//         scroll-stall  the longest gap while the rows are scrolled a page at
//                       a time from top to bottom, a step every kStepMs, each
//                       step repainted before the next, and until the rows
//                       then in sight show their pictures
//         scroll-stall-running  how much of that gap the main thread ran
//         scroll-last-pictures  from the last step until every row then in
//                       sight is painted with its picture
//         scroll-steps, rows (with no-scroll, no scrolling and no scroll-*)
//   bench_thumbnails tumbler CACHE RUNS IMAGE...
//       The desktop's thumbnailer on the session bus, given the images in one
//       Queue call for the 128-pixel flavour, from Queue to Finished: cold
//       (their thumbnails removed from CACHE first) and warm (left there); and
//       read: a plain QImageReader read of the thumbnails it made, one after
//       another. Each the median of RUNS.
//   bench_thumbnails decode RUNS IMAGE...
//       A plain QImageReader decode of the images at 128 pixels
//       (setScaledSize), one after another on one thread; the median of RUNS.
// Each prints one "NAME VALUE" line per figure (seconds unless the name says
// otherwise) and runs in a private HOME.
#include "BenchEventLoop.h"
#include "BenchHome.h"
#include "BenchPanelHost.h"
#include "BenchPanelServices.h"
#include "BrevanoData.h"
#include "FileListModel.h"
#include "FreedesktopThumbnailService.h"
#include "PaintCounter.h"
#include "PanelController.h"
#include "StallProbe.h"
#include "ThumbnailLoader.h"
#include "ui_Panel.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSet>
#include <QSettings>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <thread>
#include <vector>

namespace {

constexpr int kPictureSize = 128;
constexpr int kStepMs = 30; // a page every 30 ms: a key held down, a quick flick

// The median of runs timings of work; negative when it failed once. Before
// each, prepare (not timed).
double medianTime(
    int runs, const std::function<bool()> &work, const std::function<void()> &prepare = [] {})
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        prepare();
        QElapsedTimer clock;
        clock.start();
        if (!work())
            return -1;
        times.push_back(double(clock.nsecsElapsed()) / 1e9);
    }
    std::sort(times.begin(), times.end());
    return times.empty() ? -1 : times[times.size() / 2];
}

// A photograph's worth of detail: a gradient sky, overlapping shapes of all
// sizes and a fine grain, so that the files are as large as a camera's and
// take as long to decode.
QImage picture(int seed)
{
    QRandomGenerator random(quint32(seed) + 1);
    QImage image(2400, 1600, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, image.height());
    sky.setColorAt(0, QColor::fromHsv(random.bounded(360), 120, 250));
    sky.setColorAt(1, QColor::fromHsv(random.bounded(360), 200, 90));
    painter.fillRect(image.rect(), sky);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 600; ++i) {
        const int side = 8 + random.bounded(i < 60 ? 600 : 120);
        painter.setBrush(QColor::fromHsv(random.bounded(360), random.bounded(256),
                                         random.bounded(256), 80 + random.bounded(176)));
        const QRect shape(random.bounded(image.width()) - side / 2,
                          random.bounded(image.height()) - side / 2, side,
                          side / 2 + random.bounded(side));
        if (i % 2)
            painter.drawEllipse(shape);
        else
            painter.drawRect(shape);
    }
    painter.end();
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); x += 2) {
            const int grain = int(random.generate() & 15) - 8;
            const QRgb p = line[x];
            line[x] =
                qRgb(std::clamp(qRed(p) + grain, 0, 255), std::clamp(qGreen(p) + grain, 0, 255),
                     std::clamp(qBlue(p) + grain, 0, 255));
        }
    }
    return image;
}

// A hundred pictures of their own, each copied to the files that follow it: as
// slow to decode as all different, and made ten times as fast.
int makeImages(const QString &folder, int count)
{
    constexpr int kDistinct = 100;
    if (!QDir().mkpath(folder))
        return 1;
    const auto pathOf = [&](int i) {
        return QStringLiteral("%1/photo%2.jpg").arg(folder).arg(i, 4, 10, QChar(u'0'));
    };
    std::atomic<int> next{0};
    std::atomic<int> failed{0};
    const auto work = [&] {
        for (int i = next++; i < std::min(count, kDistinct); i = next++) {
            QImageWriter writer(pathOf(i), "jpeg");
            writer.setQuality(85);
            if (!writer.write(picture(i)))
                ++failed;
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
    for (int i = kDistinct; i < count; ++i)
        if (!QFile::copy(pathOf(i % kDistinct), pathOf(i)))
            ++failed;
    return failed == 0 ? 0 : 1;
}

// The rows whose rectangles reach into the viewport.
QStringList visiblePaths(QAbstractItemView &table)
{
    QStringList paths;
    const QRect area = table.viewport()->rect();
    for (int row = 0; row < table.model()->rowCount(); ++row) {
        const QModelIndex index = table.model()->index(row, 0);
        const QRect rect = table.visualRect(index);
        if (rect.intersects(area))
            paths.append(index.data(FileListModel::PathRole).toString());
        else if (rect.top() > area.bottom())
            break;
    }
    return paths;
}

// When a view's rows are first painted: they then ask for their pictures.
class FirstRowsPaint : public QObject
{
public:
    FirstRowsPaint(QAbstractItemView &table, const StallProbe &clock)
        : m_table(table), m_clock(clock)
    {
        table.viewport()->installEventFilter(this);
    }
    double seconds = -1;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (seconds < 0 && event->type() == QEvent::Paint && m_table.model()->rowCount() > 0)
            seconds = m_clock.elapsedSeconds();
        return false;
    }

private:
    QAbstractItemView &m_table;
    const StallProbe &m_clock;
};

// Which rows' pictures have come, and whether the rows have been painted since.
class PictureArrivals
{
public:
    PictureArrivals(ThumbnailLoader &thumbnails, QWidget &rows)
    {
        rows.installEventFilter(&m_paints);
        // After the panel's own handler, which asks for the row's repaint: a
        // later paint of the rows shows the picture.
        m_connection = QObject::connect(
            &thumbnails, &ThumbnailLoader::thumbnailReady,
            [this](const QString &path) { m_paintsBefore.insert(path, m_paints.paints); });
    }
    ~PictureArrivals() { QObject::disconnect(m_connection); }

    // Waits until every one of paths shows its picture; false when the time is up.
    bool waitForPictures(const QStringList &paths, int timeoutMs)
    {
        return BenchEventLoop::waitUntil(
            [&] {
                return std::all_of(paths.begin(), paths.end(), [&](const QString &path) {
                    return m_paintsBefore.value(path, m_paints.paints) < m_paints.paints;
                });
            },
            timeoutMs);
    }

private:
    PaintCounter m_paints;
    QHash<QString, int> m_paintsBefore; // how many paints the rows had when it came
    QMetaObject::Connection m_connection;
};

struct Screenful
{
    double shown = -1;   // the rows' first paint began (with their type icons)
    double seconds = -1; // every row in sight painted with its picture
    double stall = 0;
    QStringList paths; // the rows in sight
};

// Opens the panel and waits until every row in sight shows its picture.
Screenful openToPictures(PanelController &panel, PictureArrivals &pictures)
{
    Screenful result;
    StallProbe probe;
    QAbstractItemView &table = *panel.window()->ui().tableView;
    const FirstRowsPaint firstRows(table, probe);
    bool completed = false;
    const QMetaObject::Connection listed =
        QObject::connect(&panel, &PanelController::fileListCompleted, [&] { completed = true; });
    probe.start();
    panel.setHasActivePanel(true);
    if (BenchEventLoop::waitUntil([&] { return completed && firstRows.seconds >= 0; })) {
        result.paths = visiblePaths(table);
        if (pictures.waitForPictures(result.paths, 30000))
            result.seconds = probe.elapsedSeconds();
    }
    result.shown = firstRows.seconds;
    result.stall = probe.longestSeconds();
    QObject::disconnect(listed);
    return result;
}

struct Scroll
{
    double stall = 0;
    double stallRunning = 0; // of that, the main thread ran
    int steps = 0;
    double lastPictures = -1; // from the last step until the rows then in sight show theirs
};

// A page at a time from top to bottom, each step painted before the next.
Scroll scrollToBottom(QAbstractItemView &table, PictureArrivals &pictures)
{
    Scroll result;
    QScrollBar *bar = table.verticalScrollBar();
    PaintCounter rowPaints;
    table.viewport()->installEventFilter(&rowPaints);
    StallProbe probe;
    probe.start();
    while (bar->value() < bar->maximum()) {
        QElapsedTimer step;
        step.start();
        rowPaints.paints = 0;
        bar->setValue(std::min(bar->value() + bar->pageStep(), bar->maximum()));
        BenchEventLoop::waitUntil([&] { return rowPaints.paints > 0; });
        BenchEventLoop::waitUntil([] { return false; },
                                  std::max<int>(1, kStepMs - int(step.elapsed())));
        ++result.steps;
    }
    const double end = probe.elapsedSeconds();
    if (pictures.waitForPictures(visiblePaths(table), 120000))
        result.lastPictures = probe.elapsedSeconds() - end;
    // A little longer, for what the last pictures set off.
    BenchEventLoop::waitUntil([] { return false; }, 100);
    result.stall = probe.longestSeconds();
    result.stallRunning = probe.longestRunningSeconds();
    return result;
}

int benchPanel(const QString &folder, const QString &cache, bool scrolls)
{
    qputenv("XDG_CACHE_HOME", QFile::encodeName(cache));
    BenchPanelServices services(folder);
    BrevanoData &data = services.data();
    // The panel keeps its size under these keys.
    QSettings settings;
    settings.setValue(QStringLiteral("PanelWidth"), 400.0);
    settings.setValue(QStringLiteral("PanelHeight"), 700.0);

    PanelController panel(services.panelServices(), services.host());
    const auto &views = data.filterItems();
    const auto images = std::find_if(views.begin(), views.end(),
                                     [](const auto &view) { return view->getName() == u"Images"; });
    if (images == views.end())
        return 2;
    panel.pressedMenuItem(int(images - views.begin()));
    panel.pressedMenuItemFolderStyle(1);
    panel.pressedMenuItemIconSize(3);
    // Opened once with type icons, as in an application that has been running:
    // what every first opening loads (the MIME database, the icon theme) is in.
    bool listed = false;
    const QMetaObject::Connection first =
        QObject::connect(&panel, &PanelController::fileListCompleted, [&] { listed = true; });
    panel.pressedMenuItemIconStyle(0);
    panel.setHasActivePanel(true);
    BenchEventLoop::waitUntil([&] { return listed; });
    BenchEventLoop::waitUntil([] { return false; }, 100);
    panel.setHasActivePanel(false);
    BenchEventLoop::waitUntil([&] { return !panel.window()->isVisible(); });
    QObject::disconnect(first);
    panel.pressedMenuItemIconStyle(1);

    QAbstractItemView &table = *panel.window()->ui().tableView;
    PictureArrivals pictures(panel.thumbnails(), *table.viewport());
    const Screenful screenful = openToPictures(panel, pictures);
    const Scroll scroll = scrolls ? scrollToBottom(table, pictures) : Scroll();
    if (qEnvironmentVariableIsSet("BENCH_VERBOSE"))
        std::fprintf(stderr, "window %dx%d, viewport %dx%d\n", panel.window()->width(),
                     panel.window()->height(), table.viewport()->width(),
                     table.viewport()->height());

    std::printf("shown %.6f\n", screenful.shown);
    std::printf("visible %.6f\n", screenful.seconds);
    std::printf("pictures %.6f\n", screenful.seconds - screenful.shown);
    std::printf("visible-rows %d\n", int(screenful.paths.size()));
    std::printf("visible-files %s\n", qPrintable(screenful.paths.join(u',')));
    std::printf("open-stall %.6f\n", screenful.stall);
    if (scrolls) {
        std::printf("scroll-stall %.6f\n", scroll.stall);
        std::printf("scroll-stall-running %.6f\n", scroll.stallRunning);
        std::printf("scroll-steps %d\n", scroll.steps);
        std::printf("scroll-last-pictures %.6f\n", scroll.lastPictures);
    }
    std::printf("rows %d\n", panel.model().rowCount());
    panel.setHasActivePanel(false);
    return screenful.seconds < 0 ? 3 : 0;
}

// Waits on the main thread for the thumbnailer's Finished of one request.
class ThumbnailerFinished : public QObject
{
    Q_OBJECT
public:
    explicit ThumbnailerFinished(QDBusConnection &bus)
    {
        using Service = FreedesktopThumbnailService;
        bus.connect(Service::Service, Service::Path, Service::Service, QStringLiteral("Finished"),
                    this, SLOT(onFinished(uint)));
    }
    bool waitFor(uint handle)
    {
        return BenchEventLoop::waitUntil([&] { return m_finished.contains(handle); }, 120000);
    }

private slots:
    void onFinished(uint handle) { m_finished.insert(handle); }

private:
    QSet<uint> m_finished;
};

int benchTumbler(const QString &cache, int runs, const QStringList &paths)
{
    using Service = FreedesktopThumbnailService;
    QStringList uris;
    QStringList thumbnails;
    for (const QString &path : paths) {
        uris.append(QString::fromLatin1(Service::uriOf(path)));
        thumbnails.append(cache + QStringLiteral("/thumbnails/normal/") +
                          Service::cacheFileName(path));
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    ThumbnailerFinished finished(bus);
    const auto queue = [&] {
        QDBusMessage call = QDBusMessage::createMethodCall(
            Service::Service, Service::Path, Service::Service, QStringLiteral("Queue"));
        call << uris << QStringList(QList<QString>(uris.size(), QStringLiteral("image/jpeg")))
             << QStringLiteral("normal") << QStringLiteral("default") << 0u;
        const QDBusReply<uint> handle = bus.call(call);
        return handle.isValid() && finished.waitFor(handle.value());
    };
    const double cold = medianTime(runs, queue, [&] {
        for (const QString &thumbnail : thumbnails)
            QFile::remove(thumbnail);
    });
    const double warm = medianTime(runs, queue);
    const double read = medianTime(runs, [&] {
        return std::all_of(thumbnails.begin(), thumbnails.end(),
                           [](const QString &path) { return !QImageReader(path).read().isNull(); });
    });
    std::printf("cold %.6f\n", cold);
    std::printf("warm %.6f\n", warm);
    std::printf("read %.6f\n", read);
    return cold < 0 || warm < 0 || read < 0 ? 3 : 0;
}

int benchDecode(int runs, const QStringList &paths)
{
    const double decode = medianTime(runs, [&] {
        return std::all_of(paths.begin(), paths.end(), [](const QString &path) {
            QImageReader reader(path);
            QSize size = reader.size();
            size.scale(kPictureSize, kPictureSize, Qt::KeepAspectRatio);
            reader.setScaledSize(size);
            return !reader.read().isNull();
        });
    });
    std::printf("decode %.6f\n", decode);
    return decode < 0 ? 3 : 0;
}

} // namespace

int main(int argc, char *argv[])
{
    BenchPanelHost::quietOffscreenPlatform();
    const BenchHome home;
    if (!home.isValid())
        return 1;
    // A screen of 1920x1080, which the offscreen platform's default (800x600)
    // is not: the panel opens at its full height under the status item.
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen") {
        const QString config = QDir::home().filePath(QStringLiteral("screen.json"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(R"({"screens": [{"name": "bench", "x": 0, "y": 0, "width": 1920,
                           "height": 1080, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})") <
                0)
            return 1;
        file.close();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(config));
    }
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const QString mode = args.value(0);
    if (mode == u"make-images" && args.size() == 3)
        return makeImages(args.at(1), args.at(2).toInt());
    if (mode == u"panel" && (args.size() == 3 || args.value(3) == u"no-scroll"))
        return benchPanel(args.at(1), args.at(2), args.size() == 3);
    if (mode == u"tumbler" && args.size() > 3)
        return benchTumbler(args.at(1), args.at(2).toInt(), args.mid(3));
    if (mode == u"decode" && args.size() > 2)
        return benchDecode(args.at(1).toInt(), args.mid(2));
    std::fprintf(stderr, "usage: see the top of bench_thumbnails.cpp\n");
    return 2;
}

#include "bench_thumbnails.moc"
