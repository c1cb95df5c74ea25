// The status menu's longest main-thread stall while it opens, measured with a
// 1 ms main-thread timer from the moment the menu is asked to show until its
// population and previews are in, for bench/run.sh. Usage:
//   bench_menu images N OPENINGS   N 1200x1200 PNG images in the Shadow Desktop
//   bench_menu files N OPENINGS    N plain text files
// Runs in a private HOME; prints "SECONDS" (the longest stall of all openings).
#include "AppServices.h"
#include "BenchHome.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "MessageBoxAlertPresenter.h"
#include "StallProbe.h"
#include "StatusMenu.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QRandomGenerator>
#include <QTimer>

#include <cstdio>

namespace {

void makeImages(const QString &folder, int count)
{
    // A few different pictures, copied: photographs do not compress to nothing.
    constexpr int kDistinct = 5;
    QImage image(1200, 1200, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int i = 0; i < count; ++i) {
        const QString path =
            QStringLiteral("%1/image%2.png").arg(folder).arg(i, 3, 10, QChar(u'0'));
        if (i >= kDistinct) {
            QFile::copy(
                QStringLiteral("%1/image%2.png").arg(folder).arg(i % kDistinct, 3, 10, QChar(u'0')),
                path);
            continue;
        }
        QPainter painter(&image);
        QLinearGradient gradient(0, 0, 1200, 1200);
        gradient.setColorAt(0, QColor::fromHsv(i * 37 % 360, 200, 240));
        gradient.setColorAt(1, Qt::black);
        painter.fillRect(image.rect(), gradient);
        painter.end();
        for (int n = 0; n < 20000; ++n)
            image.setPixel(int(random.bounded(1200)), int(random.bounded(1200)), random.generate());
        image.save(path);
    }
}

void makeFiles(const QString &folder, int count)
{
    // The per-folder limit is 128: spread them over folders as a Shadow Desktop would be.
    for (int i = 0; i < count; ++i) {
        const QString sub =
            QStringLiteral("%1/folder%2").arg(folder).arg(i / 120, 2, 10, QChar(u'0'));
        QDir().mkpath(sub);
        QFile file(QStringLiteral("%1/file%2.txt").arg(sub).arg(i, 4, 10, QChar(u'0')));
        if (file.open(QIODevice::WriteOnly))
            file.write("x");
    }
}

// The longest gap between ticks of a 1 ms timer while one opening runs.
double openOnce(StatusMenu &statusMenu)
{
    StallProbe probe;
    bool done = false;
    QMetaObject::Connection finished =
        QObject::connect(&statusMenu, &StatusMenu::previewsLoaded, [&] { done = true; });
    // As soon as it can be, the quick filter submenu is opened, as a person would to
    // look at the previews coming in.
    QMetaObject::Connection completed =
        QObject::connect(&statusMenu, &StatusMenu::populationCompleted, [&] {
            QTimer::singleShot(0, [&] {
                for (QAction *action : statusMenu.menu()->actions())
                    if (action->menu() && action->isVisible() &&
                        (action->text() == u"Images" || action->text() == u"Documents"))
                        action->menu()->popup(QPoint(300, 10));
            });
        });
    probe.start();
    QTimer::singleShot(5, [&] { statusMenu.menu()->popup(QPoint(10, 10)); });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    // A little longer, for whatever the last arrival set off.
    QElapsedTimer after;
    after.start();
    while (after.elapsed() < 100)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    QObject::disconnect(finished);
    QObject::disconnect(completed);
    statusMenu.menu()->hide();
    QCoreApplication::processEvents();
    return probe.longestSeconds();
}

} // namespace

int main(int argc, char *argv[])
{
    const BenchHome home;
    if (!home.isValid())
        return 1;
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() < 2)
        return 2;
    const int count = args.at(1).toInt();
    const int openings = args.value(2, QStringLiteral("3")).toInt();

    MessageBoxAlertPresenter alerts;
    AppServices services(alerts);
    BrevanoData &data = services.data();
    Brevano &engine = services.engine();
    services.loadStore();
    const QString shadow = engine.getTargetFilename();
    QDir().mkpath(shadow);
    if (args.at(0) == u"images")
        makeImages(shadow, count);
    else if (args.at(0) == u"files")
        makeFiles(shadow, count);
    else
        return 2;

    StatusMenu statusMenu(data, engine, alerts);
    double longest = 0;
    // The first opening decodes the previews, the others find them in the cache.
    for (int i = 0; i < openings; ++i) {
        const double stall = openOnce(statusMenu);
        if (qEnvironmentVariableIsSet("BENCH_VERBOSE"))
            std::fprintf(stderr, "opening %d: longest stall %.4f s\n", i + 1, stall);
        longest = std::max(longest, stall);
    }
    std::printf("%.6f\n", longest);
    return 0;
}
