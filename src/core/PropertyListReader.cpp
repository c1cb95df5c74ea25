#include "PropertyListReader.h"

#include "XmlEscape.h"

#include <QTimeZone>
#include <QXmlStreamReader>

namespace {

// Parses with an explicit stack of open containers, so that the nesting depth
// of the input never becomes the depth of our own call stack.
class TreeBuilder
{
public:
    TreeBuilder(QXmlStreamReader &xml, int maxDepth) : m_xml(xml), m_maxDepth(maxDepth) {}

    std::optional<PropertyValue> parseDocument(QString &error);

private:
    struct OpenContainer
    {
        PropertyValue container;
        std::optional<QString> pendingKey; // dictionaries: the key awaiting its value
    };

    bool startValue(QStringView name);
    bool finishValue(const PropertyValue &value);
    bool endContainer();
    std::optional<QString> readText();
    std::optional<PropertyValue> readScalar(QStringView name);
    std::optional<UnknownElement> readUnknown();
    bool fail(const QString &message);

    QXmlStreamReader &m_xml;
    int m_maxDepth;
    std::vector<OpenContainer> m_stack;
    std::optional<PropertyValue> m_root;
    QString m_error;
};

bool isBlank(QStringView text)
{
    for (QChar c : text) {
        if (!c.isSpace())
            return false;
    }
    return true;
}

std::optional<PropertyValue> parseInteger(QStringView text)
{
    text = text.trimmed();
    bool negative = false;
    if (!text.isEmpty() && (text.front() == u'-' || text.front() == u'+')) {
        negative = text.front() == u'-';
        text = text.mid(1);
    }
    int base = 10;
    if (text.startsWith(u"0x") || text.startsWith(u"0X")) {
        base = 16;
        text = text.mid(2);
    }
    if (text.isEmpty())
        return std::nullopt;
    bool ok = false;
    const quint64 magnitude = text.toULongLong(&ok, base);
    // toULongLong accepts blanks and signs of its own; only plain digits are ours.
    for (QChar c : text) {
        if (!(c.isDigit() || (base == 16 && QStringView(u"abcdefABCDEF").contains(c))))
            return std::nullopt;
    }
    if (!ok)
        return std::nullopt;
    if (!negative)
        return magnitude <= quint64(INT64_MAX) ? PropertyValue(qint64(magnitude))
                                               : PropertyValue(magnitude);
    if (magnitude > quint64(INT64_MAX) + 1)
        return std::nullopt;
    return PropertyValue(qint64(0 - magnitude));
}

std::optional<PropertyValue> parseReal(QStringView text)
{
    text = text.trimmed();
    const QString lower = text.toString().toLower();
    if (lower == u"nan")
        return PropertyValue(std::numeric_limits<double>::quiet_NaN());
    if (lower == u"inf" || lower == u"+inf" || lower == u"infinity" || lower == u"+infinity")
        return PropertyValue(std::numeric_limits<double>::infinity());
    if (lower == u"-inf" || lower == u"-infinity")
        return PropertyValue(-std::numeric_limits<double>::infinity());
    bool ok = false;
    const double real = text.toDouble(&ok);
    if (!ok)
        return std::nullopt;
    return PropertyValue(real);
}

// YYYY[-MM[-DD[THH[:MM[:SS]]]]]Z, always UTC.
std::optional<PropertyValue> parseDate(QStringView text)
{
    text = text.trimmed();
    if (!text.endsWith(u'Z'))
        return std::nullopt;
    text.chop(1);
    int fields[6] = {0, 1, 1, 0, 0, 0};
    static constexpr char16_t separators[6] = {0, u'-', u'-', u'T', u':', u':'};
    static constexpr int widths[6] = {4, 2, 2, 2, 2, 2};
    qsizetype pos = 0;
    for (int field = 0; field < 6 && pos < text.size(); ++field) {
        if (field > 0 && text.at(pos++) != QChar(separators[field]))
            return std::nullopt;
        const QStringView digits = text.mid(pos, widths[field]);
        if (digits.size() != widths[field])
            return std::nullopt;
        for (QChar c : digits) {
            if (c < u'0' || c > u'9')
                return std::nullopt;
        }
        fields[field] = digits.toInt();
        pos += widths[field];
    }
    if (pos != text.size())
        return std::nullopt;
    const QDate date(fields[0], fields[1], fields[2]);
    const QTime time(fields[3], fields[4], fields[5]);
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return PropertyValue(QDateTime(date, time, QTimeZone::utc()));
}

std::optional<PropertyValue> parseData(QStringView text)
{
    QByteArray compact;
    compact.reserve(text.size());
    for (QChar c : text) {
        if (!c.isSpace())
            compact.append(char(c.unicode() < 128 ? c.unicode() : '!'));
    }
    auto decoded = QByteArray::fromBase64Encoding(compact, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return PropertyValue(*decoded);
}

bool TreeBuilder::fail(const QString &message)
{
    if (m_error.isEmpty())
        m_error = message;
    return false;
}

std::optional<PropertyValue> TreeBuilder::parseDocument(QString &error)
{
    bool insidePlist = false;
    bool documentDone = false;
    while (!m_xml.atEnd() && m_error.isEmpty()) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (documentDone)
                fail(QStringLiteral("more than one value at the top level"));
            else if (!insidePlist && m_stack.empty() && !m_root && m_xml.name() == u"plist")
                insidePlist = true;
            else
                startValue(m_xml.name());
            break;
        case QXmlStreamReader::EndElement:
            if (m_stack.empty()) // only </plist> can close with nothing open
                documentDone = true;
            else
                endContainer();
            break;
        case QXmlStreamReader::Characters:
            if (!isBlank(m_xml.text()))
                fail(QStringLiteral("text outside of a value"));
            break;
        default: // comments, processing instructions, the document type
            break;
        }
        if (m_root && !insidePlist)
            documentDone = true;
    }
    if (m_xml.hasError())
        fail(QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString()));
    if (m_error.isEmpty() && !m_root)
        fail(QStringLiteral("the document holds no value"));
    error = m_error;
    return m_error.isEmpty() ? m_root : std::nullopt;
}

bool TreeBuilder::startValue(QStringView name)
{
    if (!m_stack.empty() && m_stack.back().container.isDictionary() && !m_stack.back().pendingKey) {
        if (name != u"key")
            return fail(QStringLiteral("a dictionary entry does not start with a key"));
        const auto key = readText();
        if (!key)
            return false;
        m_stack.back().pendingKey = *key;
        return true;
    }
    if (name == u"dict" || name == u"array") {
        if (int(m_stack.size()) >= m_maxDepth)
            return fail(QStringLiteral("nested deeper than %1 levels").arg(m_maxDepth));
        m_stack.push_back(
            {name == u"dict" ? PropertyValue(PropertyDictionary()) : PropertyValue(PropertyArray()),
             std::nullopt});
        return true;
    }
    const auto scalar = readScalar(name);
    return scalar && finishValue(*scalar);
}

std::optional<PropertyValue> TreeBuilder::readScalar(QStringView name)
{
    if (name == u"true" || name == u"false") {
        const bool value = name == u"true";
        const auto text = readText();
        if (!text)
            return std::nullopt;
        if (!isBlank(*text))
            return fail(QStringLiteral("<%1/> holds text").arg(name)), std::nullopt;
        return PropertyValue(value);
    }
    using Parser = std::optional<PropertyValue> (*)(QStringView);
    Parser parser = nullptr;
    if (name == u"string")
        parser = [](QStringView text) {
            return std::optional<PropertyValue>(text.toString());
        };
    else if (name == u"integer")
        parser = parseInteger;
    else if (name == u"real")
        parser = parseReal;
    else if (name == u"date")
        parser = parseDate;
    else if (name == u"data")
        parser = parseData;
    if (!parser) {
        const auto unknown = readUnknown();
        return unknown ? std::optional<PropertyValue>(*unknown) : std::nullopt;
    }
    const auto text = readText();
    if (!text)
        return std::nullopt;
    auto value = parser(*text);
    if (!value)
        fail(QStringLiteral("line %1: <%2> does not hold a valid value")
                 .arg(m_xml.lineNumber())
                 .arg(name));
    return value;
}

// The text of a leaf element; elements inside it are an error.
std::optional<QString> TreeBuilder::readText()
{
    const QString name = m_xml.name().toString();
    QString text;
    while (!m_xml.atEnd()) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::Characters:
            text += m_xml.text();
            break;
        case QXmlStreamReader::EndElement:
            return text;
        case QXmlStreamReader::StartElement:
            fail(QStringLiteral("<%1> holds an element").arg(name));
            return std::nullopt;
        default:
            break;
        }
    }
    fail(QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString()));
    return std::nullopt;
}

// Copies an element we do not model, with everything inside it, as XML text.
// Comments and processing instructions inside it are dropped.
std::optional<UnknownElement> TreeBuilder::readUnknown()
{
    QString xmlText;
    int depth = 0;
    do {
        switch (m_xml.tokenType()) {
        case QXmlStreamReader::StartElement:
            if (++depth + int(m_stack.size()) > m_maxDepth) {
                fail(QStringLiteral("nested deeper than %1 levels").arg(m_maxDepth));
                return std::nullopt;
            }
            xmlText += u'<';
            xmlText += m_xml.qualifiedName();
            for (const QXmlStreamAttribute &attribute : m_xml.attributes()) {
                xmlText += u' ';
                xmlText += attribute.qualifiedName();
                xmlText += u"=\"";
                XmlEscape::appendAttribute(xmlText, attribute.value());
                xmlText += u'"';
            }
            xmlText += u'>';
            break;
        case QXmlStreamReader::Characters:
            XmlEscape::appendText(xmlText, m_xml.text());
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            xmlText += u"</";
            xmlText += m_xml.qualifiedName();
            xmlText += u'>';
            break;
        default:
            break;
        }
    } while (depth > 0 && !m_xml.atEnd() && m_xml.readNext() != QXmlStreamReader::Invalid);
    if (depth > 0) {
        fail(QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString()));
        return std::nullopt;
    }
    return UnknownElement{xmlText};
}

bool TreeBuilder::finishValue(const PropertyValue &value)
{
    if (m_stack.empty()) {
        if (m_root)
            return fail(QStringLiteral("more than one value at the top level"));
        m_root = value;
        return true;
    }
    OpenContainer &parent = m_stack.back();
    if (parent.container.isArray()) {
        parent.container.toArray().append(value);
    } else {
        // A repeated key keeps its last value.
        parent.container.toDictionary().insert(*parent.pendingKey, value);
        parent.pendingKey.reset();
    }
    return true;
}

bool TreeBuilder::endContainer()
{
    OpenContainer closed = std::move(m_stack.back());
    m_stack.pop_back();
    if (closed.pendingKey)
        return fail(QStringLiteral("the key \"%1\" has no value").arg(*closed.pendingKey));
    return finishValue(closed.container);
}

} // namespace

std::optional<PropertyValue> PropertyListReader::read(const QByteArray &xml)
{
    m_error.clear();
    if (xml.size() > m_maxBytes) {
        m_error = QStringLiteral("larger than %1 bytes").arg(m_maxBytes);
        return std::nullopt;
    }
    QXmlStreamReader reader(xml);
    reader.setNamespaceProcessing(false);
    TreeBuilder builder(reader, m_maxDepth);
    return builder.parseDocument(m_error);
}
