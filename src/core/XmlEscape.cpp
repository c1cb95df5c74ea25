#include "XmlEscape.h"

#include <QList>

static bool allowedInXml(char32_t c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
           (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

static void append(QString &out, QStringView text, bool attribute)
{
    for (char32_t c : text.toUcs4()) {
        switch (c) {
        case '&':
            out += u"&amp;";
            break;
        case '<':
            out += u"&lt;";
            break;
        case '>':
            out += u"&gt;";
            break;
        case '\r': // a raw carriage return is read back as a line feed
            out += u"&#13;";
            break;
        case '"':
            out += attribute ? u"&quot;" : u"\"";
            break;
        case '\n':
            out += attribute ? u"&#10;" : u"\n";
            break;
        case '\t':
            out += attribute ? u"&#9;" : u"\t";
            break;
        default:
            if (allowedInXml(c))
                out += QString::fromUcs4(&c, 1);
            else
                out += QChar(QChar::ReplacementCharacter);
        }
    }
}

void XmlEscape::appendText(QString &out, QStringView text) { append(out, text, false); }

void XmlEscape::appendAttribute(QString &out, QStringView value) { append(out, value, true); }
