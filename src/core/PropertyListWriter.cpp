#include "PropertyListWriter.h"

#include "XmlEscape.h"

#include <cmath>

namespace {

class XmlOutput
{
public:
    bool writeValue(const PropertyValue &value, int depth);
    QByteArray take() { return m_out.toUtf8(); }
    void raw(QStringView text) { m_out += text; }

private:
    void indent(int depth) { m_out += QString(depth, u'\t'); }
    void element(int depth, QStringView name, QStringView text);
    void escaped(QStringView text);

    QString m_out;
};

void XmlOutput::escaped(QStringView text)
{
    XmlEscape::appendText(m_out, text);
}

void XmlOutput::element(int depth, QStringView name, QStringView text)
{
    indent(depth);
    m_out += u'<';
    m_out += name;
    m_out += u'>';
    escaped(text);
    m_out += u"</";
    m_out += name;
    m_out += u">\n";
}

QString realText(double real)
{
    if (std::isnan(real))
        return QStringLiteral("nan");
    if (std::isinf(real))
        return real > 0 ? QStringLiteral("+infinity") : QStringLiteral("-infinity");
    if (real == 0) // keeps the sign of -0.0
        return std::signbit(real) ? QStringLiteral("-0.0") : QStringLiteral("0.0");
    return QString::number(real, 'g', QLocale::FloatingPointShortest);
}

QString integerText(const PropertyValue &value)
{
    return value.isUnsignedInteger() ? QString::number(value.toUInt64())
                                     : QString::number(value.toInt64());
}

bool XmlOutput::writeValue(const PropertyValue &value, int depth)
{
    if (depth > PropertyListWriter::kMaxDepth)
        return false;
    switch (value.type()) {
    case PropertyValue::Type::Null: // no plist form; an empty string is the nearest
    case PropertyValue::Type::String:
        element(depth, u"string", value.toString());
        break;
    case PropertyValue::Type::Integer:
        element(depth, u"integer", integerText(value));
        break;
    case PropertyValue::Type::Real:
        element(depth, u"real", realText(value.toReal()));
        break;
    case PropertyValue::Type::Boolean:
        indent(depth);
        m_out += value.boolValue(false) ? u"<true/>\n" : u"<false/>\n";
        break;
    case PropertyValue::Type::Date:
        element(depth, u"date", value.toDate().toUTC().toString(u"yyyy-MM-ddTHH:mm:ssZ"));
        break;
    case PropertyValue::Type::Data: {
        indent(depth);
        m_out += u"<data>\n";
        const QByteArray base64 = value.toData().toBase64();
        for (qsizetype i = 0; i < base64.size(); i += 68) {
            indent(depth);
            m_out += QString::fromLatin1(base64.mid(i, 68)) + u'\n';
        }
        indent(depth);
        m_out += u"</data>\n";
        break;
    }
    case PropertyValue::Type::Array: {
        const PropertyArray array = value.toArray();
        indent(depth);
        if (array.isEmpty()) {
            m_out += u"<array/>\n";
            break;
        }
        m_out += u"<array>\n";
        for (const PropertyValue &item : array) {
            if (!writeValue(item, depth + 1))
                return false;
        }
        indent(depth);
        m_out += u"</array>\n";
        break;
    }
    case PropertyValue::Type::Dictionary: {
        const PropertyDictionary dictionary = value.toDictionary();
        indent(depth);
        if (dictionary.isEmpty()) {
            m_out += u"<dict/>\n";
            break;
        }
        m_out += u"<dict>\n";
        for (const auto &[key, item] : dictionary) {
            element(depth + 1, u"key", key);
            if (!writeValue(item, depth + 1))
                return false;
        }
        indent(depth);
        m_out += u"</dict>\n";
        break;
    }
    case PropertyValue::Type::Unknown:
        indent(depth);
        m_out += value.toUnknown().xml + u'\n';
        break;
    }
    return true;
}

} // namespace

std::optional<QByteArray> PropertyListWriter::write(const PropertyValue &root)
{
    XmlOutput out;
    out.raw(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            u"<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            u"\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            u"<plist version=\"1.0\">\n");
    if (!out.writeValue(root, 0))
        return std::nullopt;
    out.raw(u"</plist>\n");
    return out.take();
}
