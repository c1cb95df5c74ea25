#include "PropertyListReader.h"
#include "PropertyListWriter.h"

#include <QtTest>

#include <plist/plist.h>

namespace {

std::optional<PropertyValue> readXml(const QByteArray &xml)
{
    PropertyListReader reader;
    auto value = reader.read(xml);
    if (!value)
        qInfo() << "reader:" << reader.errorString();
    return value;
}

QByteArray document(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body +
           "</plist>";
}

QDateTime utc(int y, int mo, int d, int h = 0, int mi = 0, int s = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), QTimeZone::utc());
}

PropertyDictionary everyType()
{
    PropertyArray list;
    list.append(QStringLiteral("a & b <c> \"d\" 'e' \r\n\ttab"));
    list.append(QStringLiteral("  leading and trailing blanks  "));
    list.append(QString::fromUtf8("ünïcödé 😀 中文"));
    list.append(QString());
    list.append(PropertyArray());
    list.append(PropertyDictionary());
    PropertyDictionary root;
    root.insert(QStringLiteral("list"), list);
    root.insert(QStringLiteral("negative"), qint64(-42));
    root.insert(QStringLiteral("int64 min"), qint64(INT64_MIN));
    root.insert(QStringLiteral("int64 max"), qint64(INT64_MAX));
    root.insert(QStringLiteral("uint64 max"), quint64(UINT64_MAX));
    root.insert(QStringLiteral("real"), 0.1);
    root.insert(QStringLiteral("negative zero"), -0.0);
    root.insert(QStringLiteral("denormal"), 5e-324);
    root.insert(QStringLiteral("nan"), std::nan(""));
    root.insert(QStringLiteral("infinity"), std::numeric_limits<double>::infinity());
    root.insert(QStringLiteral("minus infinity"), -std::numeric_limits<double>::infinity());
    root.insert(QStringLiteral("true"), true);
    root.insert(QStringLiteral("false"), false);
    root.insert(QStringLiteral("epoch"), utc(1970, 1, 1));
    root.insert(QStringLiteral("year 1"), utc(1, 1, 1));
    root.insert(QStringLiteral("year 4001"), utc(4001, 1, 1));
    root.insert(QStringLiteral("leap day"), utc(2024, 2, 29, 23, 59, 58));
    root.insert(QStringLiteral("data"), QByteArray::fromHex("00ff10203040506070809a"));
    root.insert(QStringLiteral("long data"), QByteArray(1000, '\xAB'));
    root.insert(QStringLiteral("empty data"), QByteArray());
    root.insert(QStringLiteral("key with & < > and \r"), QStringLiteral("value"));
    return root;
}

} // namespace

class tst_PropertyList : public QObject
{
    Q_OBJECT
private slots:
    void everyTypeRoundTrips();
    void textXmlCannotCarryIsReplaced();
    void unknownElementsSurvive();
    void acceptsOtherWritersVariants_data();
    void acceptsOtherWritersVariants();
    void rejectsMalformedDocuments_data();
    void rejectsMalformedDocuments();
    void boundsHostileDocuments();
    void keepsEveryValueOfAnotherWriter();
    void agreesWithLibplist();
};

void tst_PropertyList::everyTypeRoundTrips()
{
    const PropertyDictionary root = everyType();
    const auto xml = PropertyListWriter::write(root);
    QVERIFY(xml);
    const auto back = readXml(*xml);
    QVERIFY(back);
    QCOMPARE(back->toDictionary(), root);
    QVERIFY(back->toDictionary().value(QStringLiteral("uint64 max")).isUnsignedInteger());
    QVERIFY(std::signbit(back->toDictionary().value(QStringLiteral("negative zero")).toReal()));
    // Writing what was read gives the very same bytes.
    QCOMPARE(PropertyListWriter::write(*back), xml);
    // Dates are written in UTC to the second, ending in Z.
    QVERIFY(xml->contains("<date>2024-02-29T23:59:58Z</date>"));
    QVERIFY(xml->contains("<date>0001-01-01T00:00:00Z</date>"));
    QVERIFY(xml->contains("<integer>-9223372036854775808</integer>"));
    QVERIFY(xml->contains("<integer>18446744073709551615</integer>"));
}

void tst_PropertyList::textXmlCannotCarryIsReplaced()
{
    // Linux file names may hold control characters; a file we write must
    // still be one we can read.
    PropertyDictionary root;
    root.insert(QStringLiteral("bell\a"), QStringLiteral("esc \x1b[0m"));
    root.insert(QStringLiteral("ok"), QString(QChar(0)) + "x");
    const auto xml = PropertyListWriter::write(root);
    QVERIFY(xml);
    const auto back = readXml(*xml);
    QVERIFY(back);
    const PropertyDictionary read = back->toDictionary();
    QCOMPARE(read.keys(), (QStringList{QStringLiteral("bell\uFFFD"), QStringLiteral("ok")}));
    QCOMPARE(read.value(QStringLiteral("bell\uFFFD")).toString(), QStringLiteral("esc \uFFFD[0m"));
    QCOMPARE(read.value(QStringLiteral("ok")).toString(), QStringLiteral("\uFFFDx"));
}

void tst_PropertyList::unknownElementsSurvive()
{
    const QByteArray xml = document(
        "<dict><key>future</key><uid attr=\"1\">7<inner>a &amp; b</inner></uid>"
        "<key>list</key><array><integer>1</integer><whatever/></array>"
        "<key>escapes</key><x q='a\"&#9;&#10;&#13;'>t&#13;&lt;<!-- dropped --></x></dict>");
    const auto value = readXml(xml);
    QVERIFY(value);
    const PropertyDictionary root = value->toDictionary();
    QCOMPARE(root.value(QStringLiteral("future")).type(), PropertyValue::Type::Unknown);
    QCOMPARE(root.value(QStringLiteral("list")).toArray().at(1).type(),
             PropertyValue::Type::Unknown);
    const auto written = PropertyListWriter::write(root);
    QVERIFY(written);
    QVERIFY(written->contains("<uid attr=\"1\">7<inner>a &amp; b</inner></uid>"));
    QVERIFY(written->contains("<x q=\"a&quot;&#9;&#10;&#13;\">t&#13;&lt;</x>"));
    QCOMPARE(readXml(*written)->toDictionary(), root);
}

void tst_PropertyList::acceptsOtherWritersVariants_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<PropertyValue>("expected");

    QTest::newRow("bare root") << QByteArray("<string>x</string>") << PropertyValue("x");
    QTest::newRow("hex integer") << document("<integer>0x1F</integer>")
                                 << PropertyValue(qint64(31));
    QTest::newRow("signed blanks")
        << document("<integer> +5 </integer>") << PropertyValue(qint64(5));
    QTest::newRow("real exponent") << document("<real>1E3</real>") << PropertyValue(1000.0);
    QTest::newRow("real infinity") << document("<real>+infinity</real>")
                                   << PropertyValue(std::numeric_limits<double>::infinity());
    QTest::newRow("year only date")
        << document("<date>2024Z</date>") << PropertyValue(utc(2024, 1, 1));
    QTest::newRow("minute date") << document("<date>2024-03-05T06:07Z</date>")
                                 << PropertyValue(utc(2024, 3, 5, 6, 7));
    QTest::newRow("wrapped data") << document("<data>\n\tAAEC\n\t/w==\n</data>")
                                  << PropertyValue(QByteArray::fromHex("000102ff"));
    QTest::newRow("cdata and entities") << document("<string><![CDATA[<a>]]>&lt;&#x1F600;</string>")
                                        << PropertyValue(QString::fromUtf8("<a><😀"));
    QTest::newRow("comments") << document("<!-- c --><array><!-- c --><true/><?pi x?></array>")
                              << PropertyValue([] {
                                     PropertyArray a;
                                     a.append(true);
                                     return a;
                                 }());
    QTest::newRow("empty string") << document("<string/>") << PropertyValue(QString());
    QTest::newRow("repeated key keeps last")
        << document("<dict><key>a</key><integer>1</integer><key>a</key><integer>2</integer></dict>")
        << PropertyValue([] {
               PropertyDictionary d;
               d.insert(QStringLiteral("a"), qint64(2));
               return d;
           }());
    QTest::newRow("utf-16 document")
        << QByteArray("\xff\xfe") +
               QByteArray(reinterpret_cast<const char *>(u"<plist><string>\u00e9</string></plist>"),
                          int(sizeof(u"<plist><string>\u00e9</string></plist>") - 2))
        << PropertyValue(QStringLiteral("\u00e9"));
}

void tst_PropertyList::acceptsOtherWritersVariants()
{
    QFETCH(QByteArray, xml);
    QFETCH(PropertyValue, expected);
    const auto value = readXml(xml);
    QVERIFY(value);
    QCOMPARE(*value, expected);
}

void tst_PropertyList::rejectsMalformedDocuments_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not xml") << QByteArray("TidyFrequency = 4");
    QTest::newRow("binary plist") << QByteArray("bplist00\xd1\x01\x02", 11);
    QTest::newRow("truncated") << document("<dict><key>a</key><string>x</string>").chopped(8);
    QTest::newRow("empty plist") << document("");
    QTest::newRow("two values") << document("<true/><false/>");
    QTest::newRow("key without value") << document("<dict><key>a</key></dict>");
    QTest::newRow("value without key") << document("<dict><string>x</string></dict>");
    QTest::newRow("text in dict") << document("<dict>loose<key>a</key><true/></dict>");
    QTest::newRow("element in string") << document("<string>a<b/></string>");
    QTest::newRow("text in true") << document("<true>yes</true>");
    QTest::newRow("integer with letters") << document("<integer>12a</integer>");
    QTest::newRow("integer too large") << document("<integer>18446744073709551616</integer>");
    QTest::newRow("integer too small") << document("<integer>-9223372036854775809</integer>");
    QTest::newRow("empty integer") << document("<integer></integer>");
    QTest::newRow("real words") << document("<real>a lot</real>");
    QTest::newRow("month 13") << document("<date>2024-13-01T00:00:00Z</date>");
    QTest::newRow("date fraction") << document("<date>2024-01-01T00:00:00.5Z</date>");
    QTest::newRow("date without Z") << document("<date>2024-01-01T00:00:00</date>");
    QTest::newRow("bad base64") << document("<data>@@@@</data>");
    QTest::newRow("mismatched tags") << document("<array></dict>");
    QTest::newRow("raw control character") << document("<string>\x01</string>");
}

void tst_PropertyList::rejectsMalformedDocuments()
{
    QFETCH(QByteArray, xml);
    PropertyListReader reader;
    QVERIFY(!reader.read(xml));
    QVERIFY(!reader.errorString().isEmpty());
}

void tst_PropertyList::boundsHostileDocuments()
{
    // Nesting far past the bound fails cleanly instead of exhausting the stack.
    const QByteArray deep =
        document(QByteArray("<array>").repeated(200000) + QByteArray("</array>").repeated(200000));
    PropertyListReader reader;
    QVERIFY(!reader.read(deep));
    QVERIFY(reader.errorString().contains(u"nested"));
    const QByteArray deepUnknown =
        document(QByteArray("<x>").repeated(200000) + QByteArray("</x>").repeated(200000));
    QVERIFY(!reader.read(deepUnknown));
    // Exactly at the bound is still fine.
    const QByteArray atBound =
        document(QByteArray("<array>").repeated(PropertyListReader::kDefaultMaxDepth) +
                 QByteArray("</array>").repeated(PropertyListReader::kDefaultMaxDepth));
    QVERIFY(reader.read(atBound));

    // Entity expansion is bounded ("billion laughs").
    QByteArray laughs = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY l0 \"lol\">";
    for (int i = 1; i < 10; ++i)
        laughs += QStringLiteral("<!ENTITY l%1 \"%2\">")
                      .arg(i)
                      .arg(QStringLiteral("&l%1;").arg(i - 1).repeated(10))
                      .toUtf8();
    laughs += "]><plist><string>&l9;</string></plist>";
    QVERIFY(!reader.read(laughs));

    // External entities are never fetched.
    const QByteArray external = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY x SYSTEM "
                                "\"file:///etc/passwd\">]><plist><string>&x;</string></plist>";
    const auto value = reader.read(external);
    QVERIFY(!value || !value->toString().contains(u"root:"));

    PropertyListReader small(64);
    QVERIFY(!small.read(document("<string>" + QByteArray(100, 'a') + "</string>")));
    QVERIFY(small.errorString().contains(u"larger than"));
}

void tst_PropertyList::keepsEveryValueOfAnotherWriter()
{
    QFile file(qEnvironmentVariable("BREVANO_TEST_DATA") + "/plistlib-written.plist");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto value = readXml(file.readAll());
    QVERIFY(value);
    const PropertyDictionary root = value->toDictionary();
    const PropertyDictionary unknown = root.value(QStringLiteral("UnknownNested")).toDictionary();
    QCOMPARE(unknown.value(QStringLiteral("negative")).toInt64(), -42);
    QCOMPARE(unknown.value(QStringLiteral("int64min")).toInt64(), INT64_MIN);
    QVERIFY(unknown.value(QStringLiteral("uint64max")).isUnsignedInteger());
    QCOMPARE(unknown.value(QStringLiteral("uint64max")).toUInt64(), UINT64_MAX);
    QCOMPARE(unknown.value(QStringLiteral("real")).toReal(), 0.1);
    QCOMPARE(unknown.value(QStringLiteral("tiny")).toReal(), 5e-324);
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(char(i));
    QCOMPARE(unknown.value(QStringLiteral("data")).toData(), bytes);
    const PropertyArray dates = unknown.value(QStringLiteral("dates")).toArray();
    QCOMPARE(dates.at(0).toDate(), utc(1, 1, 1));
    QCOMPARE(dates.at(1).toDate(), utc(4001, 1, 1));
    QCOMPARE(dates.at(2).toDate(), utc(1969, 7, 20, 20, 17, 40));
    QCOMPARE(root.value(QStringLiteral("ShadowDesktopPath")).toString(),
             QStringLiteral("/home/jens/Shadow & <Desk>"));
    // Python's own reader checks what we write in tst_Cli, through the binary.
}

// libplist is an independent implementation: its reading of our output, and our
// reading of its output, must agree with ours (within its date and integer range).
void tst_PropertyList::agreesWithLibplist()
{
    PropertyDictionary root;
    root.insert(QStringLiteral("negative"), qint64(-42));
    root.insert(QStringLiteral("text"), QStringLiteral("a & <b> \u00e9"));
    root.insert(QStringLiteral("real"), 0.1);
    root.insert(QStringLiteral("date"), utc(2024, 2, 29, 23, 59, 58));
    root.insert(QStringLiteral("data"), QByteArray::fromHex("00ff"));
    root.insert(QStringLiteral("flag"), true);
    const QByteArray ours = *PropertyListWriter::write(root);

    plist_t parsed = nullptr;
    plist_from_xml(ours.constData(), uint32_t(ours.size()), &parsed);
    QVERIFY(parsed);
    uint64_t integer = 0;
    plist_get_uint_val(plist_dict_get_item(parsed, "negative"), &integer);
    QCOMPARE(int64_t(integer), -42);
    char *text = nullptr;
    plist_get_string_val(plist_dict_get_item(parsed, "text"), &text);
    QCOMPARE(QString::fromUtf8(text), QStringLiteral("a & <b> \u00e9"));
    free(text);
    double real = 0;
    plist_get_real_val(plist_dict_get_item(parsed, "real"), &real);
    QCOMPARE(real, 0.1);
    int32_t seconds = 0, microseconds = 0; // libplist counts from 2001-01-01
    plist_get_date_val(plist_dict_get_item(parsed, "date"), &seconds, &microseconds);
    QCOMPARE(utc(2001, 1, 1).addSecs(seconds), utc(2024, 2, 29, 23, 59, 58));

    char *theirs = nullptr;
    uint32_t length = 0;
    plist_to_xml(parsed, &theirs, &length);
    const auto back = readXml(QByteArray(theirs, int(length)));
    free(theirs);
    plist_free(parsed);
    QVERIFY(back);
    QCOMPARE(back->toDictionary(), root);
}

QTEST_APPLESS_MAIN(tst_PropertyList)
#include "tst_PropertyList.moc"
