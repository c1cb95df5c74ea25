#include "EngineFixture.h"

#include <QSignalSpy>

#include <QtTest>
#include <unistd.h>

using namespace std::chrono_literals;

using Fixture = EngineFixture;

static QStringList filterNames(const BrevanoData &data)
{
    QStringList names;
    for (const auto &item : data.filterItems())
        names.append(item->getName());
    return names;
}

class tst_BrevanoData : public QObject
{
    Q_OBJECT
private slots:
    void firstRunDefaults();
    void quickFilterDefaultsFollowTheFile();
    void gettersConvertWhatTheFileHolds();
    void engineDictionaryIsSharedWithTheStore();
    void saveIsAtomicAndKeepsUnknownKeys();
    void malformedFileIsKeptAsBad();
    void statusIcon();
    void timeRemainingText();
    void timeRemainingTicksInVirtualTime();
    void scheduleDates();
};

void tst_BrevanoData::firstRunDefaults()
{
    Fixture f;
    f.load();
    QVERIFY(!QFile::exists(f.sandbox.dataFile())); // loading never writes
    // The default folder is made when asked for, but never stored as a setting.
    QVERIFY(QFileInfo(f.data.getShadowDesktopPath()).isDir());
    QVERIFY(!f.data.saveData().contains(QStringLiteral("ShadowDesktopPath")));

    // "All Contents" leads and is known by its UID; every item is the very record in the store.
    const PropertyArray records = f.data.getQuickFilters();
    QCOMPARE(f.data.saveData().value(QStringLiteral("QuickFilterAllContents")).toString(),
             records.at(0).toDictionary().value(QStringLiteral("UID")).toString());
    QVERIFY(f.data.isDefaultFilter(*f.data.filterItems().at(0)));
    QVERIFY(!f.data.isDefaultFilter(*f.data.filterItems().at(1)));
    QVERIFY(
        f.data.filterItems().at(3)->dataDictionary().isSameObject(records.at(3).toDictionary()));
    // The engine starts out watching the Desktop.
    const PropertyDictionary engine = f.data.saveData().value(Brevano::SaveDataKey).toDictionary();
    QCOMPARE(engine.value(QStringLiteral("Locations")).toArray().at(0).toString(),
             f.sandbox.desktop());
}

void tst_BrevanoData::quickFilterDefaultsFollowTheFile()
{
    // An empty list with the key stays empty.
    Fixture empty;
    PropertyDictionary root;
    root.insert(QStringLiteral("QuickFilters"), PropertyArray());
    root.insert(QStringLiteral("QuickFilterAllContents"), QStringLiteral("GONE"));
    empty.writeDataFile(root);
    empty.load();
    QCOMPARE(empty.data.filterItems().size(), 0);
    QCOMPARE(empty.data.getQuickFilters().size(), 0);

    // Filters but no key: exactly one new "All Contents" at the top.
    Fixture f;
    PropertyDictionary mine;
    mine.insert(QStringLiteral("Name"), QStringLiteral("Mine"));
    PropertyArray filters;
    filters.append(mine);
    root = PropertyDictionary();
    root.insert(QStringLiteral("QuickFilters"), filters);
    f.writeDataFile(root);
    f.load();
    QCOMPARE(filterNames(f.data), (QStringList{"All Contents", "Mine"}));
    QVERIFY(f.data.isDefaultFilter(*f.data.filterItems().at(0)));
    // Removing and adding keep the two lists parallel.
    f.data.removeQuickFilter(2);
    f.data.removeQuickFilter(0);
    QCOMPARE(filterNames(f.data), QStringList{"Mine"});
    QCOMPARE(f.data.getQuickFilters().size(), 1);
    auto added = std::make_shared<QuickFilterItem>();
    added->setName(QStringLiteral("New"));
    added->applyChanges();
    f.data.addQuickFilter(added);
    QVERIFY(f.data.getQuickFilters().at(1).toDictionary().isSameObject(added->dataDictionary()));
    QVERIFY(!f.data.isDefaultFilter(*added));
}

void tst_BrevanoData::gettersConvertWhatTheFileHolds()
{
    Fixture f;
    PropertyDictionary root;
    root.insert(QStringLiteral("TidyFrequency"), qint64(4294967297)); // 2^32 + 1
    root.insert(QStringLiteral("OverwriteMode"), qint64(-1));
    root.insert(QStringLiteral("QuickFiltersMode"), QStringLiteral("2"));
    root.insert(QStringLiteral("GrowlEnabled"), qint64(0));
    root.insert(QStringLiteral("IgnoreFolders"), qint64(1));
    root.insert(QStringLiteral("LastTidy"), QStringLiteral("not a date"));
    root.insert(QStringLiteral("ShadowDesktopPath"), QStringLiteral("relative/folder"));
    f.writeDataFile(root);
    f.load();
    QCOMPARE(f.data.getTidyFrequency(), 1u);
    QCOMPARE(f.data.getOverwriteMode(), 4294967295u);
    QCOMPARE(f.data.getQuickFiltersMode(), 2u);
    QVERIFY(!f.data.getGrowlEnabled());
    QVERIFY(f.data.getIgnoreFolders());
    QCOMPARE(f.data.getLastTidyTime().toSecsSinceEpoch(), 0);
    QCOMPARE(f.data.getShadowDesktopPath(), f.sandbox.shadowDesktop());
}

void tst_BrevanoData::engineDictionaryIsSharedWithTheStore()
{
    Fixture f;
    PropertyArray locations;
    locations.append(QStringLiteral("/somewhere"));
    locations.append(QStringLiteral("/elsewhere"));
    PropertyArray rules;
    rules.append(QStringLiteral("kept as it is"));
    PropertyDictionary engine;
    engine.insert(QStringLiteral("Locations"), locations);
    engine.insert(QStringLiteral("Rules"), rules);
    PropertyDictionary root;
    root.insert(Brevano::SaveDataKey, engine);
    f.writeDataFile(root);
    f.load();
    QCOMPARE(f.engine.getLocations(), locations); // existing lists are not replaced
    QCOMPARE(f.engine.getCommonRules(), rules);
    QVERIFY(f.engine.saveData().isSameObject(
        f.data.saveData().value(Brevano::SaveDataKey).toDictionary()));
    f.engine.setEnabled(true);
    QVERIFY(f.data.saveDataFile());

    Fixture again;
    again.adoptDataFileOf(f);
    again.load();
    QVERIFY(again.engine.getEnabled());
    QCOMPARE(again.engine.getCommonRules(), rules);
}

void tst_BrevanoData::saveIsAtomicAndKeepsUnknownKeys()
{
    Fixture f;
    PropertyDictionary nested;
    nested.insert(QStringLiteral("real"), 2.5);
    nested.insert(QStringLiteral("data"), QByteArray("\x01\x02", 2));
    PropertyDictionary root;
    root.insert(QStringLiteral("SomeoneElses"), nested);
    f.writeDataFile(root);
    f.load();
    f.data.setTidyFrequency(5);
    f.data.setLastTidyTime(
        QDateTime(QDate(2026, 11, 21), QTime(10, 11, 12, 999), QTimeZone::utc()));
    QVERIFY(f.data.saveDataFile());
    // Nothing but the file itself is left in the folder.
    QCOMPARE(QDir(f.sandbox.dataFolder()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("Brevano.data")});
    // A folder that cannot be written: the save fails and says why.
    QFile::setPermissions(f.sandbox.dataFolder(), QFile::ReadOwner | QFile::ExeOwner);
    QString error;
    if (::geteuid() != 0) {
        QVERIFY(!f.data.saveDataFile(&error));
        QVERIFY(!error.isEmpty());
    }
    QFile::setPermissions(f.sandbox.dataFolder(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    Fixture reread;
    reread.adoptDataFileOf(f);
    reread.load();
    QCOMPARE(reread.data.saveData().value(QStringLiteral("SomeoneElses")), PropertyValue(nested));
    QCOMPARE(reread.data.getTidyFrequency(), 5u);
    QCOMPARE(reread.data.getLastTidyTime(),
             QDateTime(QDate(2026, 11, 21), QTime(10, 11, 12), QTimeZone::utc()));
    QCOMPARE(reread.data.filterItems().size(), 11); // not doubled on the second load
}

void tst_BrevanoData::malformedFileIsKeptAsBad()
{
    Fixture f;
    const QByteArray broken = "<plist><dict><key>TidyFrequency</key><integer>4</inte";
    f.sandbox.write(QStringLiteral(".local/share/Brevano/Brevano.data"), broken);
    f.sandbox.write(QStringLiteral(".local/share/Brevano/Brevano.data.bad"), "an older copy");
    f.load();
    QVERIFY(!f.data.loadError().isEmpty());
    QCOMPARE(f.data.getTidyFrequency(), 0u); // first-run state
    QCOMPARE(f.data.filterItems().size(), 11);
    QVERIFY(f.data.saveDataFile());
    QFile bad(f.sandbox.dataFile() + ".bad");
    QVERIFY(bad.open(QIODevice::ReadOnly));
    QCOMPARE(bad.readAll(), broken);
    // Only the first save after the load sets the file aside.
    QVERIFY(f.data.saveDataFile());
    QCOMPARE(QFile(f.sandbox.dataFile() + ".bad").size(), broken.size());

    // A file whose top level is not a dictionary is malformed too.
    Fixture g;
    g.sandbox.write(QStringLiteral(".local/share/Brevano/Brevano.data"),
                    "<plist><array><true/></array></plist>");
    g.load();
    QVERIFY(g.data.loadError().contains(u"dictionary"));
}

void tst_BrevanoData::statusIcon()
{
    Fixture f;
    f.load();
    QSignalSpy spy(&f.data.statusDisplay(), &StatusDisplay::statusIconChanged);
    f.data.setTidyFrequency(4);
    for (const bool enabled : {false, true}) {
        f.engine.setEnabled(enabled);
        f.data.updateStatusIcon();
        QCOMPARE(f.data.currentStatusIcon(), enabled ? 0 : 1);
        QCOMPARE(
            spy.takeFirst(),
            (QVariantList{enabled, QStringLiteral("Tidy Periodically (Every 1 hour)"),
                          QString(enabled ? "statusIcon.png" : "statusIconUserDisabled.png")}));
    }
    f.data.setStatusIcon(2); // stored, nothing else
    QCOMPARE(f.data.currentStatusIcon(), 2);
    QCOMPARE(spy.count(), 0);
}

// Each unit up to and including its limit; halves round to even (90 and 150 s are 2 minutes).
void tst_BrevanoData::timeRemainingText()
{
    QStringList texts;
    for (const qint64 seconds : {0, 60, 61, 90, 150, 3600, 3601, 86400, 86401})
        texts.append(StatusDisplay::timeRemainingText(seconds));
    QCOMPARE(texts, (QStringList{"0 seconds", "60 seconds", "1 minutes", "2 minutes", "2 minutes",
                                 "60 minutes", "1 hours", "24 hours", "1 days"}));
}

void tst_BrevanoData::timeRemainingTicksInVirtualTime()
{
    Fixture f;
    f.load();
    QStringList lines;
    f.notifications.observe(NotificationCenter::UpdateNextTidyText, this,
                            [&](const QVariant &line) { lines.append(line.toString()); });
    // Next check 61 s away, "LastTidy" long past: the check decides.
    f.data.startUpdatingTimeRemaining();
    QVERIFY(lines.isEmpty()); // the first tick waits for the next pass of the loop
    f.scheduler.advance(0ms);
    QCOMPARE(lines, QStringList{"Automatic tidy in 1 minutes"});
    f.scheduler.advance(1000ms);
    QCOMPARE(lines.last(), QStringLiteral("Automatic tidy in 60 seconds"));
    f.scheduler.advance(100ms);
    f.scheduler.advance(800ms); // 59.1 s left: truncated to 59
    QCOMPARE(lines.size(), 2);
    f.scheduler.advance(100ms);
    QCOMPARE(lines.last(), QStringLiteral("Automatic tidy in 59 seconds"));
    f.engine.setNextCheckDate(f.scheduler.now().addSecs(-30)); // overdue: never below zero
    f.scheduler.advance(1000ms);
    QCOMPARE(lines.last(), QStringLiteral("Automatic tidy in 0 seconds"));
    const qsizetype count = lines.size();
    f.data.stopUpdatingTimeRemaining();
    f.scheduler.advance(10s);
    QCOMPARE(lines.size(), count);

    // Two starts without a stop run two ticks; one stop ends both.
    f.data.startUpdatingTimeRemaining();
    f.data.startUpdatingTimeRemaining();
    f.scheduler.advance(1000ms);
    QCOMPARE(lines.size(), count + 4);
    f.data.stopUpdatingTimeRemaining();
    f.scheduler.advance(5s);
    QCOMPARE(lines.size(), count + 4);
}

void tst_BrevanoData::scheduleDates()
{
    Fixture f;
    f.load();
    // A day is a calendar day: across the autumn change in Berlin it lasts 25 hours.
    const QDateTime beforeChange = QDateTime(QDate(2026, 10, 24), QTime(12, 0), QTimeZone::utc());
    f.data.setLastTidyTime(beforeChange);
    f.data.setTidyFrequency(7);
    QCOMPARE(f.engine.getNextTidyDate(), beforeChange.addSecs(25 * 3600));
    f.data.setTidyFrequency(8);
    f.data.setLastTidyTime(f.scheduler.now());
    QCOMPARE(f.engine.getEarliestTidyDate(), f.scheduler.now().addDays(7));
}

QTEST_GUILESS_MAIN(tst_BrevanoData)
#include "tst_BrevanoData.moc"
