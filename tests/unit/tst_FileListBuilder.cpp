#include "BackgroundFileListBuilder.h"
#include "LocalItemInfo.h"
#include "SandboxHome.h"

#include <QSignalSpy>
#include <QtTest>

namespace {
std::shared_ptr<QuickFilterItem> view(quint32 folderStyle, const QStringList &extensions = {})
{
    auto item = std::make_shared<QuickFilterItem>();
    item->setFolderStyle(folderStyle);
    for (const QString &extension : extensions)
        item->fileExtensions().append(extension);
    return item;
}

// The files under folder in the order a plain recursive walk meets them: links
// and packages are files, everything else that is a folder is walked into.
// Counts the entries the walk looks at into entries.
QStringList walkedFiles(const QString &folder, int *entries = nullptr)
{
    QStringList files;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        if (entries)
            ++*entries;
        if (info.isDir() && !info.isSymLink() && info.suffix() != "app" &&
            info.suffix() != "bundle")
            files += walkedFiles(info.filePath(), entries);
        else
            files.append(info.filePath());
    }
    return files;
}

QStringList names(const QStringList &paths, const QString &root)
{
    QStringList relative;
    for (const QString &path : paths)
        relative.append(path.mid(root.size() + 1));
    return relative;
}
} // namespace

class tst_FileListBuilder : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void foldersFirstInFileSystemOrder();
    void folderStyles();
    void filterAppliesToFoldersToo();
    void partialListsAreThrottled();
    void cancelledListingStillCompletes();
    void flattenedListingKeepsTheWalkOrder();
    void cancelledFlattenedListingEndsEveryThread();
    void nothingReachesADeletedBuilder();

private:
    // Runs a listing to its end; returns the final list and counts the partial ones.
    QStringList list(const QString &path, std::shared_ptr<const QuickFilterItem> filter,
                     int *partials = nullptr);

    // Folders nested three deep, empty ones, packages with contents, links to
    // folders, files at every depth; the folder d<i> holds 3 + 4i files.
    QString makeUnevenTree();

    std::unique_ptr<SandboxHome> m_sandbox;
    LocalItemInfo m_itemInfo;
    QString m_root;
};

void tst_FileListBuilder::init()
{
    m_sandbox = std::make_unique<SandboxHome>();
    m_root = m_sandbox->home() + "/Shadow";
    for (const char *folder : {"Alpha", "Beta", "Gamma.jpg"})
        QDir().mkpath(m_root + '/' + folder);
    for (const char *file :
         {"one.jpg", "two.txt", ".hidden.jpg", "Beta/deep.jpg", "Beta/Inner/deeper.txt"})
        m_sandbox->write(QStringLiteral("Shadow/") + file, "x");
    QDir().mkpath(m_root + "/Tool.app/Contents"); // a package
    QFile::link("one.jpg", m_root + "/link.jpg");
}

QString tst_FileListBuilder::makeUnevenTree()
{
    const QString tree = m_root + "/Tree";
    for (int i = 0; i < 8; ++i) {
        const QString folder = QStringLiteral("Shadow/Tree/d%1/").arg(i);
        for (int f = 0; f < 3 + 4 * i; ++f)
            m_sandbox->write(folder + QStringLiteral("f%1.txt").arg(f), "x");
        for (int s = 0; s < i % 3; ++s)
            m_sandbox->write(folder + QStringLiteral("s%1/deep/g.txt").arg(s), "x");
        m_sandbox->write(folder + "Kit.bundle/Contents/inner.txt", "x");
        QDir().mkpath(m_sandbox->home() + '/' + folder + "empty");
        QFile::link("..", m_sandbox->home() + '/' + folder + "up");
    }
    m_sandbox->write("Shadow/Tree/top.txt", "x");
    QFile::link("d1", tree + "/toD1");
    return tree;
}

QStringList tst_FileListBuilder::list(const QString &path,
                                      std::shared_ptr<const QuickFilterItem> filter, int *partials)
{
    BackgroundFileListBuilder builder(path, std::move(filter), QString(), m_root, m_itemInfo);
    QSignalSpy updated(&builder, &BackgroundFileListBuilder::fileListUpdated);
    QSignalSpy completed(&builder, &BackgroundFileListBuilder::fileListCompleted);
    builder.startBackgroundTask();
    if (!completed.wait(10000))
        return {QStringLiteral("(no completion)")};
    if (partials)
        *partials = int(updated.count());
    return completed.first().first().toStringList();
}

void tst_FileListBuilder::foldersFirstInFileSystemOrder()
{
    const QStringList paths = list(m_root, nullptr);
    QStringList expectedFolders, expectedFiles;
    QDirIterator it(m_root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QString path = it.next();
        const bool browsable =
            QFileInfo(path).isDir() && !QFileInfo(path).isSymLink() && !path.endsWith(".app");
        (browsable ? expectedFolders : expectedFiles).append(path);
    }
    QCOMPARE(paths, expectedFolders + expectedFiles);
    QCOMPARE(expectedFolders.size(), 3);
    QVERIFY(paths.contains(m_root + "/Tool.app"));    // a package is one file
    QVERIFY(paths.contains(m_root + "/.hidden.jpg")); // hidden items are listed
}

void tst_FileListBuilder::folderStyles()
{
    // Style 0 browses the given folder; style 1 lists every file of the root.
    QCOMPARE(list(m_root + "/Beta", view(0)),
             (QStringList{m_root + "/Beta/Inner", m_root + "/Beta/deep.jpg"}));
    QStringList everyFile = names(list(m_root + "/Beta", view(1)), m_root);
    everyFile.sort();
    QCOMPARE(everyFile, (QStringList{".hidden.jpg", "Beta/Inner/deeper.txt", "Beta/deep.jpg",
                                     "Tool.app", "link.jpg", "one.jpg", "two.txt"}));
    QCOMPARE(list(m_root, view(2)), QStringList{}); // other styles list nothing
    QCOMPARE(list(m_sandbox->home() + "/missing", nullptr), QStringList{});
}

void tst_FileListBuilder::filterAppliesToFoldersToo()
{
    QStringList jpegs = names(list(m_root, view(0, {"jpg"})), m_root);
    QCOMPARE(jpegs.first(), QStringLiteral("Gamma.jpg")); // a folder whose name matches
    jpegs.sort();
    QCOMPARE(jpegs, (QStringList{".hidden.jpg", "Gamma.jpg", "link.jpg", "one.jpg"}));
}

void tst_FileListBuilder::partialListsAreThrottled()
{
    for (int i = 0; i < 50; ++i)
        m_sandbox->write(QStringLiteral("Shadow/many/f%1").arg(i), "x");
    // A clock that moves 100 ms per look: a partial list every fifth entry at most.
    BackgroundFileListBuilder builder(m_root + "/many", nullptr, QString(), m_root, m_itemInfo);
    std::atomic<qint64> fake{0};
    builder.setClockForTesting([&fake] { return fake += 100; });
    QSignalSpy updated(&builder, &BackgroundFileListBuilder::fileListUpdated);
    QSignalSpy completed(&builder, &BackgroundFileListBuilder::fileListCompleted);
    builder.startBackgroundTask();
    QVERIFY(completed.wait(10000));
    QCOMPARE(completed.first().first().toStringList().size(), 50);
    QCOMPARE(updated.first().first().toStringList(),
             QStringList{}); // the first push clears the view
    QVERIFY2(updated.count() >= 9 && updated.count() <= 11,
             qPrintable(QString::number(updated.count())));
    qsizetype previous = -1;
    for (const QList<QVariant> &push : std::as_const(updated)) {
        QVERIFY(push.first().toStringList().size() > previous); // each a growing snapshot
        previous = push.first().toStringList().size();
    }
    // A clock that stands still: the empty push and the final list only.
    BackgroundFileListBuilder still(m_root + "/many", nullptr, QString(), m_root, m_itemInfo);
    still.setClockForTesting([] { return qint64(0); });
    QSignalSpy stillUpdated(&still, &BackgroundFileListBuilder::fileListUpdated);
    QSignalSpy stillCompleted(&still, &BackgroundFileListBuilder::fileListCompleted);
    still.startBackgroundTask();
    QVERIFY(stillCompleted.wait(10000));
    QCOMPARE(stillUpdated.count(), 1);
}

// Holds the worker at its first entry until the test lets it go on.
struct WorkerGate
{
    QSemaphore reached;
    QSemaphore released;
    std::atomic<bool> first{true};
    std::function<void(const QString &)> hook()
    {
        return [this](const QString &) {
            if (first.exchange(false)) {
                reached.release();
                released.acquire();
            }
        };
    }
};

void tst_FileListBuilder::cancelledListingStillCompletes()
{
    for (int i = 0; i < 20; ++i)
        m_sandbox->write(QStringLiteral("Shadow/big/f%1").arg(i), "");
    BackgroundFileListBuilder builder(m_root + "/big", nullptr, QString(), m_root, m_itemInfo);
    WorkerGate gate;
    builder.setEntryHookForTesting(gate.hook());
    QSignalSpy completed(&builder, &BackgroundFileListBuilder::fileListCompleted);
    builder.startBackgroundTask();
    gate.reached.acquire();
    QVERIFY(builder.isRunning());
    builder.stopBackgroundTask();
    gate.released.release();
    QVERIFY(completed.wait(10000));
    QCOMPARE(completed.first().first().toStringList(), QStringList{}); // stopped at its first entry
    QVERIFY(!builder.isRunning());
}

void tst_FileListBuilder::flattenedListingKeepsTheWalkOrder()
{
    const QString tree = makeUnevenTree();
    BackgroundFileListBuilder builder(tree, view(1), QString(), tree, m_itemInfo);
    // The walking thread reads the root alone: the first thread to look at an
    // entry is the walker. A helper is held at its first entry, in some folder,
    // until the walker has looked at every entry outside that folder's tree:
    // however far it read ahead, the walk must wait there for the helper.
    const bool helpers = QThread::idealThreadCount() > 1;
    std::atomic<std::thread::id> walker{};
    std::atomic<bool> helperHeld{false}, walkerWaited{!helpers};
    QString heldFolder; // written before `reached` is released
    QSemaphore reached, released, walkerLooked, walkerMayGoOn;
    const auto releaseAnyway = qScopeGuard([&] {
        released.release();
        walkerMayGoOn.release();
    });
    builder.setEntryHookForTesting([&](const QString &path) {
        std::thread::id none;
        const std::thread::id self = std::this_thread::get_id();
        if (walker.compare_exchange_strong(none, self) || walker == self) {
            walkerLooked.release();
            // Below the root only once a helper is held, so that one surely is.
            if (QFileInfo(path).path() != tree && !walkerWaited.exchange(true))
                walkerMayGoOn.acquire();
        } else if (!helperHeld.exchange(true)) {
            heldFolder = QFileInfo(path).path();
            reached.release();
            walkerMayGoOn.release();
            released.acquire();
        }
    });
    QSignalSpy completed(&builder, &BackgroundFileListBuilder::fileListCompleted);
    builder.startBackgroundTask();
    int everyEntry = 0, heldEntries = 0;
    const QStringList expected = walkedFiles(tree, &everyEntry);
    if (helpers) {
        QVERIFY(reached.tryAcquire(1, 10000));
        walkedFiles(heldFolder, &heldEntries);
        QVERIFY(walkerLooked.tryAcquire(everyEntry - heldEntries, 10000));
        released.release();
    }
    QVERIFY(completed.wait(10000));
    QCOMPARE(completed.first().first().toStringList(), expected);
}

void tst_FileListBuilder::cancelledFlattenedListingEndsEveryThread()
{
    const QString tree = makeUnevenTree();
    const QStringList everything = walkedFiles(tree);
    BackgroundFileListBuilder builder(tree, view(1), QString(), tree, m_itemInfo);
    // Whichever thread reads d6 (27 files) is held at its first entry while
    // the listing is stopped; from then on each thread may look at one more
    // entry at most.
    std::atomic<bool> stopped{false};
    std::atomic<bool> first{true};
    std::atomic<int> lookedAtAfterStop{0};
    QSemaphore reached, released;
    const auto releaseAnyway = qScopeGuard([&] { released.release(); });
    builder.setEntryHookForTesting([&](const QString &path) {
        if (stopped)
            ++lookedAtAfterStop;
        else if (QFileInfo(path).path() == tree + "/d6" && first.exchange(false)) {
            reached.release();
            released.acquire();
        }
    });
    QSignalSpy completed(&builder, &BackgroundFileListBuilder::fileListCompleted);
    builder.startBackgroundTask();
    QVERIFY(reached.tryAcquire(1, 10000));
    builder.stopBackgroundTask();
    stopped = true;
    released.release();
    QVERIFY(completed.wait(10000));
    const QStringList got = completed.first().first().toStringList();
    QVERIFY(got.size() < everything.size());
    QCOMPARE(got, everything.first(got.size())); // what it had, in order
    QVERIFY2(lookedAtAfterStop <= QThread::idealThreadCount(),
             qPrintable(QString::number(lookedAtAfterStop)));
    QTRY_COMPARE(BackgroundFileListBuilder::runningWorkers(), 0);
}

void tst_FileListBuilder::nothingReachesADeletedBuilder()
{
    for (int i = 0; i < 20; ++i)
        m_sandbox->write(QStringLiteral("Shadow/big/f%1").arg(i), "");
    // Two listings report to one receiver; the one whose builder is deleted
    // while its worker runs must deliver nothing, the other everything.
    QObject receiver;
    int deletedDeliveries = 0;
    int keptCompletions = 0;
    auto *deleted =
        new BackgroundFileListBuilder(m_root + "/big", nullptr, QString(), m_root, m_itemInfo);
    BackgroundFileListBuilder kept(m_root + "/big", nullptr, QString(), m_root, m_itemInfo);
    connect(deleted, &BackgroundFileListBuilder::fileListCompleted, &receiver,
            [&] { ++deletedDeliveries; });
    connect(deleted, &BackgroundFileListBuilder::fileListUpdated, &receiver,
            [&] { ++deletedDeliveries; });
    connect(&kept, &BackgroundFileListBuilder::fileListCompleted, &receiver,
            [&] { ++keptCompletions; });
    WorkerGate gate;
    deleted->setEntryHookForTesting(gate.hook());
    deleted->startBackgroundTask();
    gate.reached.acquire(); // its first partial list is posted already
    kept.startBackgroundTask();
    delete deleted;
    gate.released.release();
    QTRY_COMPARE(BackgroundFileListBuilder::runningWorkers(), 0);
    QCoreApplication::processEvents(); // runs everything both workers posted
    QCOMPARE(keptCompletions, 1);
    QCOMPARE(deletedDeliveries, 0);
}

QTEST_GUILESS_MAIN(tst_FileListBuilder)
#include "tst_FileListBuilder.moc"
