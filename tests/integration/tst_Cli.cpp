#include "CliRun.h"
#include "MoveJournal.h"
#include "SandboxHome.h"

#include <QStandardPaths>

using Result = CliResult;

// Runs the built binary as a user would, in a sandbox HOME.
class tst_Cli : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_sandbox = std::make_unique<SandboxHome>(); }
    void pathsFollowHomeAndXdg();
    void getPrintsDefaultsAndNeverWrites();
    void setTypesAndSaves();
    void setRejectsBadInput_data();
    void setRejectsBadInput();
    void ignoreCommands();
    void filtersAndHelp();
    void malformedDataFileIsKept();
    void anotherWritersFileKeepsEveryValue();
    void openWithoutTheTrayApplication();
    void openStartsOrAsksTheTrayApplication();
    void commandsThatOnlyLookNeverWaitForTheJournal();

private:
    static Result run(const QStringList &args, const QString &workingDirectory = QString())
    {
        return runCli(args, QProcessEnvironment::systemEnvironment(), workingDirectory);
    }
    QByteArray dataFile() const
    {
        QFile file(m_sandbox->dataFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<SandboxHome> m_sandbox;
};

void tst_Cli::pathsFollowHomeAndXdg()
{
    Result r = run({"paths"});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out,
             QStringLiteral("desktop: %1\nshadow-desktop: %2\ndata-file: %3\n")
                 .arg(m_sandbox->desktop(), m_sandbox->shadowDesktop(), m_sandbox->dataFile()));
    QVERIFY(!QFile::exists(m_sandbox->dataFile()));

    m_sandbox->write(QStringLiteral(".config/user-dirs.dirs"),
                     "XDG_DESKTOP_DIR=\"$HOME/Bureau\"\n");
    qputenv("XDG_DATA_HOME", (m_sandbox->home() + "/data").toUtf8());
    r = run({"paths"});
    QVERIFY(r.out.startsWith(QStringLiteral("desktop: %1/Bureau\n").arg(m_sandbox->home())));
    QVERIFY(r.out.contains(m_sandbox->home() + "/data/Brevano/Brevano.data"));
    QCOMPARE(run({"paths", "extra"}).status, 2);
}

void tst_Cli::getPrintsDefaultsAndNeverWrites()
{
    // One key of each printed type.
    const QList<QPair<const char *, const char *>> defaults{
        {"OverwriteMode", "3"}, {"Enabled", "false"}, {"LastTidy", "1970-01-01T00:00:00Z"}};
    for (const auto &[key, value] : defaults) {
        const Result r = run({"get", key});
        QCOMPARE(r.status, 0);
        QCOMPARE(r.out, QString::fromLatin1(value) + u'\n');
    }
    QCOMPARE(run({"get", "ShadowDesktopPath"}).out, m_sandbox->shadowDesktop() + u'\n');
    const Result filters = run({"get", "QuickFilters"});
    QVERIFY(filters.out.startsWith(u"<?xml"));
    QVERIFY(!QFile::exists(m_sandbox->dataFile()));

    const Result unknown = run({"get", "Nonsense"});
    QCOMPARE(unknown.status, 2);
    QVERIFY(unknown.err.contains(u"unknown key \"Nonsense\""));
    QCOMPARE(run({"get"}).status, 2);
}

void tst_Cli::setTypesAndSaves()
{
    QCOMPARE(run({"set", "TidyFrequency", "4"}).status, 0);
    QCOMPARE(run({"get", "TidyFrequency"}).out, QStringLiteral("4\n"));
    QCOMPARE(run({"set", "IgnoreFolders", "yes"}).status, 0);
    QCOMPARE(run({"get", "IgnoreFolders"}).out, QStringLiteral("true\n"));
    QCOMPARE(run({"set", "Enabled", "true"}).status, 0);
    QCOMPARE(run({"get", "Enabled"}).out, QStringLiteral("true\n"));
    QVERIFY(dataFile().contains("<key>Enabled</key>\n\t\t<true/>"));
    QCOMPARE(run({"set", "LastTidy", "2026-11-21T10:30:00+01:00"}).status, 0);
    QCOMPARE(run({"get", "LastTidy"}).out, QStringLiteral("2026-11-21T09:30:00Z\n"));
    QCOMPARE(run({"set", "VerboseOutput", "true"}).status, 0);
    QCOMPARE(run({"get", "VerboseOutput"}).out, QStringLiteral("false\n"));

    const QString folder = m_sandbox->home() + "/Shadow";
    QDir().mkpath(folder);
    QCOMPARE(run({"set", "ShadowDesktopPath", folder + "/"}).status, 0);
    QCOMPARE(run({"get", "ShadowDesktopPath"}).out, folder + u'\n');
    QCOMPARE(run({"paths"}).out.section(u'\n', 1, 1), QStringLiteral("shadow-desktop: ") + folder);
    QCOMPARE(run({"set", "ShadowDesktopPath", ""}).status, 0);
    QCOMPARE(run({"get", "ShadowDesktopPath"}).out, m_sandbox->shadowDesktop() + u'\n');
    // Settings set earlier survive later saves.
    QCOMPARE(run({"get", "TidyFrequency"}).out, QStringLiteral("4\n"));
}

void tst_Cli::setRejectsBadInput_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("message");
    QTest::newRow("word for integer") << QStringList{"set", "TidyFrequency", "soon"}
                                      << "TidyFrequency expects an unsigned integer";
    QTest::newRow("negative") << QStringList{"set", "OverwriteMode", "-1"}
                              << "OverwriteMode expects";
    QTest::newRow("too large") << QStringList{"set", "Tab", "4294967296"} << "Tab expects";
    QTest::newRow("not boolean") << QStringList{"set", "PinPanel", "maybe"}
                                 << "PinPanel expects a boolean";
    QTest::newRow("bad date") << QStringList{"set", "LastTidy", "yesterday"}
                              << "LastTidy expects a date";
    QTest::newRow("relative folder")
        << QStringList{"set", "ShadowDesktopPath", "rel"} << "expects an absolute folder path";
    QTest::newRow("missing folder") << QStringList{"set", "ShadowDesktopPath", "/no/such/folder"}
                                    << "expects an existing folder";
    QTest::newRow("the Desktop") << QStringList{"set", "ShadowDesktopPath", "DESKTOP"}
                                 << "outside the Desktop";
    QTest::newRow("the root") << QStringList{"set", "ShadowDesktopPath", "/"}
                              << "holds neither your home folder";
    QTest::newRow("read only") << QStringList{"set", "IgnoreFiles", "x"}
                               << "not set from the command line";
    QTest::newRow("unknown") << QStringList{"set", "Colour", "red"} << "unknown key \"Colour\"";
    QTest::newRow("no value") << QStringList{"set", "TidyFrequency"} << "KEY and a VALUE";
}

void tst_Cli::setRejectsBadInput()
{
    QFETCH(QStringList, args);
    QFETCH(QString, message);
    args.replaceInStrings(QStringLiteral("DESKTOP"), m_sandbox->desktop());
    const Result r = run(args);
    QCOMPARE(r.status, 2);
    QVERIFY2(r.err.contains(message), qPrintable(r.err));
    QVERIFY(!QFile::exists(m_sandbox->dataFile()));
}

void tst_Cli::ignoreCommands()
{
    const QString d = m_sandbox->desktop();
    QCOMPARE(run({"ignore", "add", d + "/b.txt", d + "/a.txt"}).status, 0);
    Result r = run({"ignore", "add", d + "/c.txt", d + "/Sub/x.txt", u"/elsewhere/y"_qs});
    QCOMPARE(r.status, 1);
    QCOMPARE(r.err, QStringLiteral("Items must be contained directly within the Desktop to be "
                                   "added to the Brevano ignore list. 2 files skipped\n"));
    // A relative path is taken from the current folder.
    QCOMPARE(run({"ignore", "add", "./Zed"}, d).status, 0);
    QCOMPARE(run({"ignore", "list"}).out,
             QStringList({d + "/Zed", d + "/a.txt", d + "/b.txt", d + "/c.txt", ""}).join(u'\n'));
    QCOMPARE(run({"get", "IgnoreFiles"}).status, 0);

    r = run({"ignore", "remove", d + "/a.txt", d + "/never.txt"});
    QCOMPARE(r.status, 1);
    QVERIFY(r.err.contains("not on the ignore list: " + d + "/never.txt"));
    QVERIFY(!run({"ignore", "list"}).out.contains(u"/a.txt"));
    // The Desktop's own ".." or "." is no item on it.
    for (const QString &folder : {d + "/..", d + "/."}) {
        r = run({"ignore", "add", d + "/b.txt", folder});
        QCOMPARE(r.status, 2);
        QVERIFY2(r.err.contains('"' + folder + '"'), qPrintable(r.err));
    }
    QVERIFY(!run({"ignore", "list"}).out.contains(u"/."));
    QCOMPARE(run({"ignore"}).status, 2);
    QCOMPARE(run({"ignore", "add"}).status, 2);
    QCOMPARE(run({"ignore", "list", "extra"}).status, 2);
}

void tst_Cli::filtersAndHelp()
{
    const Result r = run({"filters"});
    QCOMPARE(r.status, 0);
    QVERIFY(r.out.contains(u"\nTorrents\ttorrent,part\n")); // name, tab, extensions
    QVERIFY(!QFile::exists(m_sandbox->dataFile()));

    for (const QStringList &args :
         {QStringList{"--help"}, QStringList{"help", "set"}, QStringList{"get", "--help"},
          QStringList{"ignore", "--help"}, QStringList{"paths", "-h"},
          QStringList{"filters", "--help"}, QStringList{"open", "--help"}}) {
        const Result help = run(args);
        QCOMPARE(help.status, 0);
        QVERIFY(help.out.contains(u"Usage: brevano"));
    }
    QVERIFY(run({"get", "--help"}).out.contains(u"TidyFrequency"));
    const Result unknown = run({"frobnicate"});
    QCOMPARE(unknown.status, 2);
    QVERIFY(unknown.err.contains(u"unknown command \"frobnicate\""));
    QVERIFY(run({"--version"}).out.startsWith(u"brevano "));
}

void tst_Cli::malformedDataFileIsKept()
{
    const QByteArray broken = "<plist><dict><key>TidyFrequency</key>";
    m_sandbox->write(QStringLiteral(".local/share/Brevano/Brevano.data"), broken);
    Result r = run({"get", "TidyFrequency"});
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out, QStringLiteral("0\n"));
    QVERIFY(r.err.contains(u"could not be read"));
    QCOMPARE(dataFile(), broken); // reading never writes
    QCOMPARE(run({"set", "TidyFrequency", "2"}).status, 0);
    r = run({"get", "TidyFrequency"});
    QCOMPARE(r.out, QStringLiteral("2\n"));
    QCOMPARE(r.err, QString());
}

// A data file from another property-list writer goes through a real load and
// save; that writer's reader then finds every one of its values unchanged.
void tst_Cli::anotherWritersFileKeepsEveryValue()
{
    const QString fixture = qEnvironmentVariable("BREVANO_TEST_DATA") + "/plistlib-written.plist";
    QFile source(fixture);
    QVERIFY(source.open(QIODevice::ReadOnly));
    m_sandbox->write(QStringLiteral(".local/share/Brevano/Brevano.data"), source.readAll());
    QCOMPARE(run({"get", "TidyFrequency"}).out, QStringLiteral("4\n"));
    QCOMPARE(run({"get", "GrowlOnEmpty"}).out, QStringLiteral("false\n")); // integer 0
    QCOMPARE(run({"set", "PinPanel", "true"}).status, 0);

    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        QSKIP("python3 is not installed");
    QProcess check;
    check.start(python, {"-c",
                         "import plistlib,sys\n"
                         "a=plistlib.load(open(sys.argv[1],'rb'))\n"
                         "b=plistlib.load(open(sys.argv[2],'rb'))\n"
                         "bad=[k for k in a if a[k]!=b.get(k)]\n"
                         "print(bad); sys.exit(1 if bad or b['PinPanel'] is not True else 0)",
                         fixture, m_sandbox->dataFile()});
    QVERIFY(check.waitForFinished());
    QVERIFY2(check.exitCode() == 0, check.readAllStandardOutput().constData());
}

void tst_Cli::openWithoutTheTrayApplication()
{
    const Result bogus = run({"open", "bogus"});
    QCOMPARE(bogus.status, 2);
    QVERIFY2(bogus.err.contains(u"\"bogus\"") &&
                 bogus.err.contains(u"panel, menu, restore, about, preferences, tutorial"),
             qPrintable(bogus.err));
    QCOMPARE(run({"open"}).status, 2);

    // Nothing runs and nothing can start: one sentence says so.
    QProcessEnvironment headless = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        headless.remove(name);
    const Result r = runCli({"open", "panel"}, headless);
    QCOMPARE(r.status, 1);
    QCOMPARE(r.out, QString());
    QVERIFY2(r.err.startsWith(u"brevano: \"open panel\" needs the tray application") &&
                 r.err.count(u'\n') == 1,
             qPrintable(r.err));
}

// With none running, "open" starts the tray application and shows what it was
// asked for once started; then the running one shows what later commands ask.
// A menu that opens writes its outline.
void tst_Cli::openStartsOrAsksTheTrayApplication()
{
    const QString outline = m_sandbox->home() + "/outline.txt";
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove("DBUS_SESSION_BUS_ADDRESS"); // no tray host or notification service here
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("BREVANO_MENU_OUTLINE", outline);
    QProcess app;
    app.setProcessEnvironment(env);
    app.start(QStringLiteral(BREVANO_BINARY), {"open", "menu"});
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(outline) || app.state() == QProcess::NotRunning,
                             30000);
    QVERIFY2(app.state() == QProcess::Running, app.readAllStandardError().constData());
    QFile shown(outline);
    QVERIFY(shown.open(QIODevice::ReadOnly));
    QVERIFY(shown.readAll().startsWith("Open Panel\n--\nTidy Now\n"));
    QVERIFY(QFile::remove(outline));

    Result r = runCli({"open", "about"}, env);
    QCOMPARE(r.status, 0);
    QCOMPARE(r.out + r.err, QString());
    r = runCli({"open", "menu"}, env);
    QCOMPARE(r.status, 0);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(outline), 30000);
    r = runCli({"open", "bogus"}, env);
    QCOMPARE(r.status, 2);
    QVERIFY(r.err.contains(u"\"bogus\""));
    app.terminate();
    QVERIFY(app.waitForFinished(30000));
    QCOMPARE(app.exitCode(), 0);
}

// Another Brevano (here, this test) holds the journal while it moves items.
void tst_Cli::commandsThatOnlyLookNeverWaitForTheJournal()
{
    MoveJournal held(MoveJournal::defaultPath());
    QVERIFY(held.open(std::chrono::milliseconds(0)));
    Result r = run({"status"});
    QCOMPARE(r.status, 0);
    QVERIFY2(r.err.isEmpty(), qPrintable(r.err));
    r = run({"history"});
    QCOMPARE(r.status, 1);
    QVERIFY2(r.err.startsWith("brevano: the move journal is not available: ") &&
                 r.err.contains("in use"),
             qPrintable(r.err));
}

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_Cli.moc"
