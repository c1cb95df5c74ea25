#include "QuickFilterItem.h"
#include "SandboxHome.h"

#include <QtTest>

namespace {
QDateTime local(int y, int mo, int d, int h = 12)
{
    return QDateTime(QDate(y, mo, d), QTime(h, 0));
}

PropertyDictionary record(const QString &name, const QStringList &extensions)
{
    PropertyArray list;
    for (const QString &extension : extensions)
        list.append(extension);
    PropertyDictionary dictionary;
    dictionary.insert(QStringLiteral("Name"), name);
    dictionary.insert(QStringLiteral("FileExtensions"), list);
    return dictionary;
}
} // namespace

class tst_QuickFilters : public QObject
{
    Q_OBJECT
private slots:
    void editingWorksOnACopyUntilApplied();
    void discardDoesNotUndoExtensionEdits();
    void uidIsMadeOnce();
    void extensionMatching_data();
    void extensionMatching();
    void dateCondition_data();
    void dateCondition();
    void dateConditionReadsTheFile();
    void registerFileTypesPreparesABuild();
};

void tst_QuickFilters::editingWorksOnACopyUntilApplied()
{
    PropertyDictionary data = record(QStringLiteral("Images"), {"jpg"});
    data.insert(QStringLiteral("Unknown"), QStringLiteral("kept"));
    QuickFilterItem item(data);
    QVERIFY(item.dataDictionary().isSameObject(data));
    item.setName(QStringLiteral("Pictures"));
    item.setIconSize(3);
    QCOMPARE(data.value(QStringLiteral("Name")).toString(), QStringLiteral("Images"));
    QCOMPARE(item.getName(), QStringLiteral("Pictures"));
    item.applyChanges();
    QCOMPARE(data.value(QStringLiteral("Name")).toString(), QStringLiteral("Pictures"));
    QCOMPARE(data.value(QStringLiteral("IconSize")).toInt64(), 3);
    QCOMPARE(data.value(QStringLiteral("Unknown")).toString(), QStringLiteral("kept"));
    item.setName(QString()); // removes the key
    item.applyChanges();
    QVERIFY(!data.contains(QStringLiteral("Name")));
    QVERIFY(item.getName().isNull());

    // A copy is a new item over the same record, with its own working copy.
    QuickFilterItem copy(item);
    copy.setStyle(2);
    QCOMPARE(item.getStyle(), 0u);
    QVERIFY(copy.dataDictionary().isSameObject(data));
}

void tst_QuickFilters::discardDoesNotUndoExtensionEdits()
{
    PropertyDictionary data = record(QStringLiteral("Images"), {"JPG", "png"});
    QuickFilterItem item(data);
    item.setName(QStringLiteral("Renamed"));
    item.fileExtensions().append(QStringLiteral("gif"));
    item.fileExtensions().removeAt(0);
    item.discardChanges();
    QCOMPARE(item.getName(), QStringLiteral("Images"));
    // The working copy shared the record's extension list, so those edits stay.
    QCOMPARE(item.getExtensionsText(), QStringLiteral("png,gif"));
    QCOMPARE(data.value(QStringLiteral("FileExtensions")).toArray().size(), 2);

    // Without a list, fileExtensions() creates one in the working copy only.
    PropertyDictionary bare;
    QuickFilterItem fresh(bare);
    fresh.fileExtensions().append(QStringLiteral("txt"));
    QVERIFY(!bare.contains(QStringLiteral("FileExtensions")));
    fresh.applyChanges();
    QCOMPARE(fresh.getExtensionsText(), QStringLiteral("txt"));
    QVERIFY(bare.contains(QStringLiteral("FileExtensions")));
}

void tst_QuickFilters::uidIsMadeOnce()
{
    PropertyDictionary data;
    data.insert(QStringLiteral("UID"), QString());
    QuickFilterItem item(data);
    const QString uid = item.getUid();
    QVERIFY(!uid.isEmpty());
    QCOMPARE(data.value(QStringLiteral("UID")).toString(), uid); // both dictionaries
    QCOMPARE(item.getUid(), uid);
    QVERIFY(QuickFilterItem::createUid() != QuickFilterItem::createUid());
}

void tst_QuickFilters::extensionMatching_data()
{
    QTest::addColumn<QStringList>("extensions");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("passes");
    const QStringList packages{"dmg", "zip", "gz"};
    QTest::newRow("last extension") << packages << "/d/archive.tar.gz" << true;
    QTest::newRow("no extension") << packages << "/d/README" << false;
    QTest::newRow("case sensitive") << QStringList{"jpg"} << "/d/photo.JPG" << false;
    QTest::newRow("exact case") << QStringList{"JPG"} << "/d/photo.JPG" << true;
    QTest::newRow("dot in folder only") << packages << "/d.zip/file" << false;
    QTest::newRow("trailing dot") << packages << "/d/name." << false;
    QTest::newRow("all contents, no extension") << QStringList{} << "/d/README" << true;
    QTest::newRow("all contents, folder") << QStringList{} << "/d/Folder" << true;
    QTest::newRow("empty extension listed") << QStringList{""} << "/d/README" << true;
}

void tst_QuickFilters::extensionMatching()
{
    QFETCH(QStringList, extensions);
    QFETCH(QString, path);
    QFETCH(bool, passes);
    const QuickFilterItem item(record(QStringLiteral("f"), extensions));
    QCOMPARE(item.filePassesFilter(path, QDateTime::currentDateTimeUtc()), passes);
}

void tst_QuickFilters::dateCondition_data()
{
    QTest::addColumn<quint32>("mode");
    QTest::addColumn<quint32>("units");
    QTest::addColumn<qint64>("value");
    QTest::addColumn<QDateTime>("modified");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<bool>("passes");

    const QDateTime now = local(2026, 3, 20);
    QTest::newRow("within 7 days, 6 ago")
        << 1u << 0u << qint64(7) << now.addDays(-6) << now << true;
    QTest::newRow("within 7 days, 8 ago")
        << 1u << 0u << qint64(7) << now.addDays(-8) << now << false;
    QTest::newRow("older 7 days, 6 ago")
        << 2u << 0u << qint64(7) << now.addDays(-6) << now << false;
    QTest::newRow("older 7 days, 8 ago") << 2u << 0u << qint64(7) << now.addDays(-8) << now << true;
    QTest::newRow("on the limit, within")
        << 1u << 0u << qint64(7) << now.addDays(-7) << now << true;
    QTest::newRow("on the limit, older") << 2u << 0u << qint64(7) << now.addDays(-7) << now << true;
    QTest::newRow("other mode means within")
        << 9u << 1u << qint64(1) << now.addDays(-6) << now << true;
    QTest::newRow("no mode") << 0u << 0u << qint64(1) << now.addYears(-5) << now << true;
    // Unit 5 adds nothing: "within" passes only future dates, "older" everything past.
    QTest::newRow("unit 5 within past") << 1u << 5u << qint64(7) << now.addSecs(-1) << now << false;
    QTest::newRow("unit 5 within future")
        << 1u << 5u << qint64(7) << now.addSecs(60) << now << true;
    QTest::newRow("unit 5 older") << 2u << 5u << qint64(7) << now.addSecs(-1) << now << true;
    // 31 January plus one month is the end of February.
    QTest::newRow("month from 31 Jan, 28 Feb")
        << 1u << 2u << qint64(1) << local(2026, 1, 31) << local(2026, 2, 28) << true;
    QTest::newRow("month from 31 Jan, 1 Mar")
        << 1u << 2u << qint64(1) << local(2026, 1, 31) << local(2026, 3, 1) << false;
    QTest::newRow("leap year 29 Feb")
        << 1u << 2u << qint64(1) << local(2024, 1, 31) << local(2024, 2, 29) << true;
    QTest::newRow("year from 29 Feb")
        << 2u << 3u << qint64(1) << local(2024, 2, 29) << local(2025, 2, 28) << true;
    // Weeks count calendar days across the spring change (Berlin, 29 March 2026).
    QTest::newRow("week over DST")
        << 1u << 1u << qint64(1) << local(2026, 3, 26, 12) << local(2026, 4, 2, 12) << true;
    QTest::newRow("absurd value") << 1u << 3u << (qint64(1) << 62) << now.addYears(-100) << now
                                  << true;
}

void tst_QuickFilters::dateCondition()
{
    QFETCH(quint32, mode);
    QFETCH(quint32, units);
    QFETCH(qint64, value);
    QFETCH(QDateTime, modified);
    QFETCH(QDateTime, now);
    QFETCH(bool, passes);
    QuickFilterItem item;
    item.setDateMode(mode);
    item.setDateUnits(units);
    item.setDateValue(value);
    QCOMPARE(item.datePasses(modified, now), passes);
}

void tst_QuickFilters::dateConditionReadsTheFile()
{
    SandboxHome sandbox;
    const QString path = sandbox.write(QStringLiteral("Desktop/old.txt"), "x");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(local(2020, 1, 1), QFileDevice::FileModificationTime));
    file.close();
    QuickFilterItem item(record(QStringLiteral("Documents"), {"txt"}));
    item.setDateMode(QuickFilterItem::DateModeWithin);
    const QDateTime now = local(2026, 1, 1);
    QVERIFY(!item.filePassesFilter(path, now));
    item.setDateMode(QuickFilterItem::DateModeOlderThan);
    QVERIFY(item.filePassesFilter(path, now));
    // No date to read: the date condition lets it pass.
    item.setDateMode(QuickFilterItem::DateModeWithin);
    QVERIFY(item.filePassesFilter(sandbox.home() + "/Desktop/gone.txt", now));
}

void tst_QuickFilters::registerFileTypesPreparesABuild()
{
    QuickFilterItem images(record(QStringLiteral("Images"), {"jpg", "png"}));
    QuickFilterItem shots(record(QStringLiteral("Shots"), {"png"}));
    QHash<QString, QList<QuickFilterItem *>> map;
    images.addItem({{QStringLiteral("DisplayName"), QStringLiteral("left over")}});
    images.incrementHiddenCount();
    images.registerFileTypes(map, QVariant(1));
    shots.registerFileTypes(map, QVariant(2));
    QCOMPARE(map.value(QStringLiteral("jpg")), (QList<QuickFilterItem *>{&images}));
    QCOMPARE(map.value(QStringLiteral("png")), (QList<QuickFilterItem *>{&images, &shots}));
    QCOMPARE(images.mainMenuItem(), QVariant(1));
    QVERIFY(images.itemList().isEmpty());
    QCOMPARE(images.hiddenCount(), 0u);
    QVERIFY(images.wasLastHidden());
}

QTEST_APPLESS_MAIN(tst_QuickFilters)
#include "tst_QuickFilters.moc"
