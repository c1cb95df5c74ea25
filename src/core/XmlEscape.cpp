#include "XmlEscape.h"

// The reference for c, or nothing when c is written as it is.
static QStringView replacement(char16_t c, bool attribute)
{
    switch (c) {
    case u'&':
        return u"&amp;";
    case u'<':
        return u"&lt;";
    case u'>':
        return u"&gt;";
    case u'\r': // a raw carriage return is read back as a line feed
        return u"&#13;";
    case u'"':
        return attribute ? QStringView(u"&quot;") : QStringView();
    case u'\n':
        return attribute ? QStringView(u"&#10;") : QStringView();
    case u'\t':
        return attribute ? QStringView(u"&#9;") : QStringView();
    default:
        return {};
    }
}

// Copies runs of plain text whole; only markup, line ends and characters XML
// cannot carry (control characters, lone surrogates, U+FFFE/U+FFFF) are replaced.
static void append(QString &out, QStringView text, bool attribute)
{
    out.reserve(out.size() + text.size());
    qsizetype runStart = 0;
    const auto flush = [&](qsizetype end) {
        out += text.mid(runStart, end - runStart);
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        QStringView instead;
        bool skipPair = false;
        if (c < 0x20 || c == u'&' || c == u'<' || c == u'>' || c == u'"') {
            instead = replacement(c, attribute);
            if (instead.isNull() && c < 0x20 && c != u'\t' && c != u'\n')
                instead = u"\uFFFD";
        } else if (QChar::isHighSurrogate(c)) {
            if (i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1].unicode()))
                skipPair = true;
            else
                instead = u"\uFFFD";
        } else if (QChar::isLowSurrogate(c) || c == 0xFFFE || c == 0xFFFF) {
            instead = u"\uFFFD";
        }
        if (skipPair) {
            ++i;
            continue;
        }
        if (instead.isNull())
            continue;
        flush(i);
        out += instead;
        runStart = i + 1;
    }
    flush(text.size());
}

void XmlEscape::appendText(QString &out, QStringView text)
{
    append(out, text, false);
}

void XmlEscape::appendAttribute(QString &out, QStringView value)
{
    append(out, value, true);
}
