#include "PropertyValue.h"

#include <QtTest>

class tst_PropertyTree : public QObject
{
    Q_OBJECT
private slots:
    void containersAreShared();
    void shallowCopySharesChildren();
    void deepCopySharesNothing();
    void integersCompareByValueAndSign();
    void lenientConversions_data();
    void lenientConversions();
};

void tst_PropertyTree::containersAreShared()
{
    PropertyDictionary root;
    PropertyDictionary engine;
    root.insert(QStringLiteral("Engine"), engine);
    // A change through the handle held elsewhere is seen inside the root.
    engine.insert(QStringLiteral("Enabled"), true);
    QCOMPARE(root.value(QStringLiteral("Engine")).toDictionary().value(QStringLiteral("Enabled")),
             PropertyValue(true));
    QVERIFY(root.value(QStringLiteral("Engine")).toDictionary().isSameObject(engine));

    PropertyArray list;
    root.insert(QStringLiteral("List"), list);
    root.value(QStringLiteral("List")).toArray().append(QStringLiteral("a"));
    QCOMPARE(list.size(), 1);
    // Replacing a key drops the old object from the tree; the old handle lives on.
    root.insert(QStringLiteral("List"), PropertyArray());
    QCOMPARE(list.size(), 1);
    QCOMPARE(root.value(QStringLiteral("List")).toArray().size(), 0);
}

void tst_PropertyTree::shallowCopySharesChildren()
{
    PropertyArray extensions;
    extensions.append(QStringLiteral("jpg"));
    PropertyDictionary record;
    record.insert(QStringLiteral("Name"), QStringLiteral("Images"));
    record.insert(QStringLiteral("FileExtensions"), extensions);

    PropertyDictionary copy = record.shallowCopy();
    QVERIFY(!copy.isSameObject(record));
    copy.insert(QStringLiteral("Name"), QStringLiteral("Pictures"));
    QCOMPARE(record.value(QStringLiteral("Name")).toString(), QStringLiteral("Images"));
    // ... but the nested list is the same object in both.
    copy.value(QStringLiteral("FileExtensions")).toArray().append(QStringLiteral("png"));
    QCOMPARE(extensions.size(), 2);

    PropertyArray arrayCopy = extensions.shallowCopy();
    arrayCopy.removeAt(0);
    QCOMPARE(extensions.size(), 2);
}

void tst_PropertyTree::deepCopySharesNothing()
{
    PropertyArray inner;
    inner.append(qint64(1));
    PropertyDictionary middle;
    middle.insert(QStringLiteral("inner"), inner);
    PropertyDictionary root;
    root.insert(QStringLiteral("middle"), middle);
    root.insert(QStringLiteral("data"), QByteArray("\x00\x01", 2));

    const PropertyDictionary copy = root.deepCopy();
    QCOMPARE(copy, root);
    copy.value(QStringLiteral("middle"))
        .toDictionary()
        .value(QStringLiteral("inner"))
        .toArray()
        .append(qint64(2));
    copy.value(QStringLiteral("middle")).toDictionary().insert(QStringLiteral("new"), true);
    QCOMPARE(inner.size(), 1);
    QVERIFY(!middle.contains(QStringLiteral("new")));
    QVERIFY(copy != root);
}

void tst_PropertyTree::integersCompareByValueAndSign()
{
    QCOMPARE(PropertyValue(qint64(5)), PropertyValue(quint64(5)));
    QVERIFY(PropertyValue(qint64(-1)) != PropertyValue(quint64(UINT64_MAX)));
    QVERIFY(PropertyValue(qint64(1)) != PropertyValue(1.0)); // an integer is not a real
    QVERIFY(PropertyValue(true) != PropertyValue(qint64(1)));
    QCOMPARE(PropertyValue(std::nan("")), PropertyValue(std::nan("")));
    QCOMPARE(PropertyValue(QDateTime(QDate(2026, 1, 1), QTime(12, 0), QTimeZone::utc())),
             PropertyValue(QDateTime(QDate(2026, 1, 1), QTime(13, 0), QTimeZone(3600))));
}

void tst_PropertyTree::lenientConversions_data()
{
    QTest::addColumn<PropertyValue>("value");
    QTest::addColumn<bool>("boolean");
    QTest::addColumn<qint64>("integer");

    QTest::newRow("absent") << PropertyValue() << true << qint64(42);
    QTest::newRow("true") << PropertyValue(true) << true << qint64(1);
    QTest::newRow("false") << PropertyValue(false) << false << qint64(0);
    QTest::newRow("integer 0") << PropertyValue(qint64(0)) << false << qint64(0);
    QTest::newRow("integer 1") << PropertyValue(qint64(1)) << true << qint64(1);
    QTest::newRow("negative") << PropertyValue(qint64(-7)) << true << qint64(-7);
    QTest::newRow("unsigned max") << PropertyValue(quint64(UINT64_MAX)) << true << qint64(-1);
    QTest::newRow("real") << PropertyValue(2.9) << true << qint64(2);
    QTest::newRow("real -2.9") << PropertyValue(-2.9) << true << qint64(-2);
    QTest::newRow("real huge") << PropertyValue(1e300) << true << qint64(INT64_MAX);
    QTest::newRow("string YES") << PropertyValue("YES") << true << qint64(0);
    QTest::newRow("string true") << PropertyValue(" true") << true << qint64(0);
    QTest::newRow("string no") << PropertyValue("no") << false << qint64(0);
    QTest::newRow("string 12abc") << PropertyValue("  12abc") << true << qint64(12);
    QTest::newRow("string -005") << PropertyValue("-005") << true << qint64(-5);
    QTest::newRow("string 000") << PropertyValue("000") << false << qint64(0);
    QTest::newRow("string overflow")
        << PropertyValue("99999999999999999999") << true << qint64(INT64_MAX);
    QTest::newRow("date") << PropertyValue(QDateTime::currentDateTimeUtc()) << true << qint64(42);
    QTest::newRow("array") << PropertyValue(PropertyArray()) << true << qint64(42);
}

void tst_PropertyTree::lenientConversions()
{
    QFETCH(PropertyValue, value);
    QFETCH(bool, boolean);
    QFETCH(qint64, integer);
    QCOMPARE(value.boolValue(true), boolean);
    QCOMPARE(value.integerValue(42), integer);
}

QTEST_APPLESS_MAIN(tst_PropertyTree)
#include "tst_PropertyTree.moc"
