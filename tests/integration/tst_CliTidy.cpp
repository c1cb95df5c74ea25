#include "CliRun.h"
#include "FileTree.h"
#include "GermanLocale.h"
#include "SandboxHome.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using Result = CliResult;

// Dates an item (a link itself, not its target) seconds into the past.
void age(const QString &path, qint64 seconds)
{
    const struct timespec time
    {
        QDateTime::currentSecsSinceEpoch() - seconds, 0
    };
    const struct timespec times[2] = {time, time};
    QVERIFY(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times,
                        AT_SYMLINK_NOFOLLOW) == 0);
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                      QDir::NoDotAndDotDot,
                                  QDir::Name | QDir::IgnoreCase);
}
} // namespace

// The tidy and Shadow Desktop commands, run as a user would run them.
class tst_CliTidy : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void tidyMovesExactlyTheCandidates();
    void dryRunTouchesNothing();
    void clashesByOverwriteMode();
    void browseRestoreTrashEmpty();
    void onlyPlainNamesAreTaken();
    void sizeKeepsItsPointInAnyLocale();
    void statusSaysWhetherAnythingTidies(); // and whether anything moves
    void namesThatAreNotUtf8();

private:
    static QProcessEnvironment environment()
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove("DBUS_SESSION_BUS_ADDRESS"); // no notification service here
        return env;
    }
    static Result run(const QStringList &args, const QProcessEnvironment &env = environment())
    {
        return runCli(args, env);
    }
    QString desktopItem(const QString &name, qint64 ageSeconds = 600,
                        const QByteArray &content = "x")
    {
        const QString path = m_sandbox->write("Desktop/" + name, content);
        age(path, ageSeconds);
        return path;
    }

    std::unique_ptr<SandboxHome> m_sandbox;
    QString m_desktop;
    QString m_shadow;
};

void tst_CliTidy::init()
{
    m_sandbox = std::make_unique<SandboxHome>();
    m_desktop = m_sandbox->desktop();
    m_shadow = m_sandbox->shadowDesktop();
}

// Which items are candidates is the engine's (tst_TidyEngine); here, that the
// command applies the stored settings and says what it did.
void tst_CliTidy::tidyMovesExactlyTheCandidates()
{
    desktopItem("report.pdf", 600, "pdf");
    desktopItem("Project/notes.txt", 600);
    age(m_desktop + "/Project", 600);
    desktopItem(".hidden", 600);
    desktopItem("downloading.iso", 1);
    desktopItem("keep.txt", 600);
    QFile::link(m_desktop + "/report.pdf", m_desktop + "/shortcut");
    age(m_desktop + "/shortcut", 600);
    QCOMPARE(run({"ignore", "add", m_desktop + "/keep.txt"}).status, 0);
    const auto project = fingerprint(m_desktop + "/Project");

    const Result r = run({"tidy"});
    QCOMPARE(r.status, 0);
    QCOMPARE(entries(m_desktop), (QStringList{".hidden", "downloading.iso", "keep.txt"}));
    QCOMPARE(entries(m_shadow), (QStringList{"Project", "report.pdf", "shortcut"}));
    QCOMPARE(fingerprint(m_shadow + "/Project"), project);
    QVERIFY(QFileInfo(m_shadow + "/shortcut").isSymLink());
    QStringList lines = r.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.takeLast(), QStringLiteral("Moved 3 of 4 items found to Shadow Desktop"));
    lines.sort();
    QCOMPARE(lines,
             (QStringList{"deferred downloading.iso", "moved Project -> " + m_shadow + "/Project",
                          "moved report.pdf -> " + m_shadow + "/report.pdf",
                          "moved shortcut -> " + m_shadow + "/shortcut"}));

    QFile::remove(m_desktop + "/downloading.iso"); // nothing to move
    QCOMPARE(run({"tidy"}).out,
             QStringLiteral("Brevano found no files on the Desktop and will skip this Tidy\n"));
}

void tst_CliTidy::dryRunTouchesNothing()
{
    desktopItem("a.txt");
    desktopItem("b.txt", 1);
    m_sandbox->write(".local/share/Brevano/Shadow Desktop/a.txt", "older");
    const auto before = fingerprint(m_sandbox->home());
    const Result r = run({"tidy", "--dry-run"});
    QCOMPARE(r.status, 0);
    QStringList lines = r.out.split('\n', Qt::SkipEmptyParts);
    lines.sort();
    QCOMPARE(lines,
             (QStringList{"deferred b.txt", "would move a.txt -> " + m_shadow + "/a 2.txt"}));
    QCOMPARE(fingerprint(m_sandbox->home()), before);
    QCOMPARE(run({"tidy", "--now"}).status, 2);
}

void tst_CliTidy::clashesByOverwriteMode()
{
    m_sandbox->write(".local/share/Brevano/Shadow Desktop/Notes.txt", "older");
    desktopItem("Notes.txt", 600, "newer");
    QCOMPARE(run({"set", "OverwriteMode", "1"}).status, 0);
    Result r = run({"tidy"});
    QCOMPARE(r.status, 1);
    QVERIFY(
        r.out.startsWith("failed Notes.txt: an item named so is already in the Shadow Desktop\n"));
    QCOMPARE(run({"set", "OverwriteMode", "3"}).status, 0);
    r = run({"tidy"});
    QCOMPARE(r.status, 0);
    QVERIFY(r.out.startsWith("moved Notes.txt -> " + m_shadow + "/Notes 2.txt\n"));
    QCOMPARE(entries(m_shadow), (QStringList{"Notes 2.txt", "Notes.txt"}));
}

void tst_CliTidy::browseRestoreTrashEmpty()
{
    for (const char *name : {"a.txt", "b.txt", "Folder/inner.txt", "Folder/Sub/deep.txt"})
        m_sandbox->write(QStringLiteral(".local/share/Brevano/Shadow Desktop/") + name,
                         QByteArray(100, 'x'));
    QStringList top = run({"list"}).out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(top.first(), QStringLiteral("Folder")); // folders first
    top.sort();
    QCOMPARE(top, (QStringList{"Folder", "a.txt", "b.txt"}));
    QStringList all = run({"list", "--recursive"}).out.split('\n', Qt::SkipEmptyParts);
    all.sort();
    QCOMPARE(all, (QStringList{"Folder/Sub/deep.txt", "Folder/inner.txt", "a.txt", "b.txt"}));
    QCOMPARE(run({"size"}).out, QStringLiteral("400 bytes (400 bytes)\n"));
    QVERIFY(run({"status"}).out.contains("\nitems: 3\n"));

    desktopItem("b.txt", 600, "on the desktop");
    Result r = run({"restore", "a.txt", "b.txt", "--ignore"});
    QCOMPARE(r.status, 1);
    QCOMPARE(r.out, QStringLiteral("restored a.txt\n"));
    QVERIFY(r.err.contains("not restored b.txt: an item of that name is on the Desktop"));
    QCOMPARE(run({"ignore", "list"}).out, m_desktop + "/a.txt\n");
    QCOMPARE(run({"restore", "--all"}).status, 1); // b.txt still clashes
    QVERIFY(QFileInfo(m_desktop + "/Folder/Sub/deep.txt").exists());

    r = run({"trash", "b.txt", "missing"});
    QCOMPARE(r.status, 1);
    QCOMPARE(r.out, QStringLiteral("trashed b.txt\n"));
    QVERIFY(QFileInfo::exists(m_sandbox->home() + "/.local/share/Trash/files/b.txt"));

    m_sandbox->write(".local/share/Brevano/Shadow Desktop/c.txt", "c");
    QCOMPARE(run({"empty"}).status, 2); // no terminal here, and no --yes
    QCOMPARE(entries(m_shadow), QStringList{"c.txt"});
    QCOMPARE(run({"empty", "--yes"}).status, 0);
    QCOMPARE(entries(m_shadow), QStringList{});
    QCOMPARE(run({"size"}).out, QStringLiteral("Unknown (0 bytes)\n"));
}

// Names that lead out of the Shadow Desktop, or into a folder of it, are bad
// usage; nothing is touched, not even the good names given beside them.
void tst_CliTidy::onlyPlainNamesAreTaken()
{
    m_sandbox->write(".local/share/Brevano/Shadow Desktop/a.txt", "a");
    m_sandbox->write(".local/share/Brevano/Shadow Desktop/Folder/b.txt", "b");
    m_sandbox->write(".local/share/Brevano/x", "x");
    QCOMPARE(run({"set", "TidyFrequency", "2"}).status, 0); // the data file exists
    const auto before = fingerprint(m_sandbox->home());
    const QList<QStringList> bad{{"trash", "../Brevano.data"},
                                 {"restore", "../x"},
                                 {"trash", "Folder/b.txt"},
                                 {"trash", ".."},
                                 {"trash", "."},
                                 {"restore", "a.txt", ""},
                                 {"trash", "a.txt", "../x"},
                                 {"restore", "a.txt", "..", "--ignore"}};
    for (const QStringList &args : bad) {
        const Result r = run(args);
        QVERIFY2(r.status == 2, qPrintable(args.join(' ') + ": " + r.err));
        const QString named = args.at(1) == u"a.txt" ? args.at(2) : args.at(1);
        QVERIFY2(r.err.contains('"' + named + '"'), qPrintable(r.err));
        QCOMPARE(r.out, QString());
        QCOMPARE(fingerprint(m_sandbox->home()), before);
    }
    QCOMPARE(run({"trash", "a.txt"}).status, 0);
}

void tst_CliTidy::sizeKeepsItsPointInAnyLocale()
{
    GermanLocale german;
    if (!german.isValid())
        QSKIP("localedef could not build a German locale");
    m_sandbox->write(".local/share/Brevano/Shadow Desktop/a.bin", QByteArray(1536, 'x'));
    QProcessEnvironment env = environment();
    env.insert("LOCPATH", german.path());
    env.insert("LC_ALL", GermanLocale::Name);
    env.insert("LANG", GermanLocale::Name);
    const Result r = run({"size"}, env);
    QCOMPARE(r.err, QString());
    QCOMPARE(r.out, QStringLiteral("1.5 KB (1536 bytes)\n"));
}

// The next automatic tidy is told only by the running application; without it
// the line says what starts it.
void tst_CliTidy::statusSaysWhetherAnythingTidies()
{
    QCOMPARE(run({"set", "Enabled", "true"}).status, 0);
    Result r = run({"status"});
    QCOMPARE(r.status, 0);
    QVERIFY2(r.out.contains("\nnext: none while Brevano is not running: "), qPrintable(r.out));
    QVERIFY2(r.out.endsWith("\nmode: basic\n"), qPrintable(r.out));

    // In advanced mode nothing moves, and both commands say why.
    const QString item = desktopItem("stays.txt");
    QCOMPARE(run({"set", "OperationMode", "1"}).status, 0);
    r = run({"tidy"});
    QCOMPARE(r.status, 0);
    QVERIFY2(r.out.startsWith("Advanced mode is chosen: "), qPrintable(r.out));
    QVERIFY(QFileInfo::exists(item));
    QVERIFY2(run({"status"}).out.contains("\nmode: advanced: Advanced mode is chosen: "),
             qPrintable(r.out));
    QCOMPARE(run({"set", "OperationMode", "0"}).status, 0);

    QProcess app; // the tray application, without a tray host on an offscreen display
    QProcessEnvironment env = environment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    app.setProcessEnvironment(env);
    app.start(QStringLiteral(BREVANO_BINARY), QStringList());
    const QString socket =
        m_sandbox->home() + "/run/brevano-" + QString::number(::getuid()) + ".socket";
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(socket) || app.state() == QProcess::NotRunning,
                             60000);
    QVERIFY2(app.state() == QProcess::Running, app.readAllStandardError().constData());
    r = run({"status"});
    app.terminate();
    QVERIFY(app.waitForFinished(30000));
    QVERIFY2(r.out.contains("\nnext: Automatic tidy in "), qPrintable(r.out + r.err));
}

void tst_CliTidy::namesThatAreNotUtf8()
{
    const QByteArray name = "caf\xe9.txt"; // Latin-1
    const QByteArray desktop = QFile::encodeName(m_desktop) + '/' + name;
    const QByteArray shadow = QFile::encodeName(m_shadow) + '/' + name;
    struct stat info;
    const int file = ::open(desktop.constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    QVERIFY(file >= 0);
    const struct timespec times[2] = {{QDateTime::currentSecsSinceEpoch() - 600, 0},
                                      {QDateTime::currentSecsSinceEpoch() - 600, 0}};
    QCOMPARE(::futimens(file, times), 0);
    ::close(file);
    // Shown with U+FFFD for the byte that is not UTF-8; moved with its bytes.
    const QString shown = QString::fromUtf8("caf\xef\xbf\xbd.txt");
    Result r = run({"tidy"});
    QCOMPARE(r.out, "moved " + shown + " -> " + m_shadow + '/' + shown +
                        "\nMoved 1 of 1 items found to Shadow Desktop\n");
    QCOMPARE(::lstat(shadow.constData(), &info), 0);
    QCOMPARE(run({"list"}).out, shown + '\n');
    // A shell passes the name's bytes as they are.
    r = runCli({"-c", "exec \"$0\" restore \"$(printf 'caf\\351.txt')\"", BREVANO_BINARY},
               environment(), QString(), QStringLiteral("/bin/sh"));
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out, "restored " + shown + '\n');
    QCOMPARE(::lstat(desktop.constData(), &info), 0);
    ::unlink(desktop.constData()); // QTemporaryDir could not remove it
}

QTEST_GUILESS_MAIN(tst_CliTidy)
#include "tst_CliTidy.moc"
