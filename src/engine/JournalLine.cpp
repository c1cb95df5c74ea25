#include "JournalLine.h"

#include "FileNames.h"

#include <zlib.h>

#include <cstring>

namespace {

constexpr char kHex[] = "0123456789abcdef";

bool needsEscape(uint c)
{
    return c < 0x20 || c == 0x7f || c == '%';
}

void appendEscaped(QByteArray &out, const char *bytes, qsizetype count)
{
    const qsizetype start = out.size();
    out.resize(start + 3 * count);
    char *to = out.data() + start;
    for (qsizetype i = 0; i < count; ++i) {
        const uchar c = uchar(bytes[i]);
        if (needsEscape(c)) {
            *to++ = '%';
            *to++ = kHex[c >> 4];
            *to++ = kHex[c & 15];
        } else {
            *to++ = char(c);
        }
    }
    out.resize(to - out.constData());
}

// Whether any of the four UTF-16 units in v is not printable ASCII, or "%".
bool anySpecial(quint64 v)
{
    constexpr quint64 ones = 0x0001000100010001, highs = 0x8000800080008000;
    if (v & 0xff80ff80ff80ff80) // beyond ASCII; below, each unit is less than 0x80
        return true;
    const quint64 controls = ~(v + 0x7fe0 * ones) & highs; // below 0x20
    const quint64 del = (v + ones) & (0x80 * ones);        // 0x7f
    const quint64 t = v ^ (0x25 * ones);
    const quint64 percent = (t - ones) & ~t & highs; // a unit of t is 0
    return (controls | del | percent) != 0;
}

// Appends text's bytes, escaped. Text that needs neither encoding nor escapes
// (plain ASCII without control characters or "%", as most names are) is
// copied four characters at a time.
void appendText(QByteArray &out, QStringView text)
{
    const qsizetype start = out.size();
    const qsizetype count = text.size();
    const char16_t *units = text.utf16();
    out.resize(start + count + 3); // room for a last group of four
    char *to = out.data() + start;
    bool special = false;
    // A group's units in v and its bytes in four keep their order in memory
    // whatever the byte order.
    for (qsizetype i = 0; i < count && !special; i += 4) {
        quint64 v = 0x0041004100410041; // "AAAA": past the end counts as plain
        if (count - i >= 4)
            std::memcpy(&v, units + i, sizeof v);
        else
            std::memcpy(&v, units + i, sizeof(char16_t) * (count - i));
        special = anySpecial(v);
        const quint32 four = quint32(v & 0xff) | quint32((v >> 8) & 0xff00) |
                             quint32((v >> 16) & 0xff0000) | quint32((v >> 24) & 0xff000000);
        std::memcpy(to + i, &four, sizeof four);
    }
    out.resize(start + count);
    if (!special)
        return;
    out.resize(start);
    const QByteArray bytes = FileNames::encode(text.toString());
    appendEscaped(out, bytes.constData(), bytes.size());
}

// Appends a separator (a tab, say) and the number.
void appendNumber(QByteArray &out, quint64 number, char before = '\t')
{
    char digits[24] = {before};
    const auto end = std::to_chars(digits + 1, digits + sizeof digits, number).ptr;
    out.append(digits, end - digits);
}

} // namespace

quint32 JournalLine::checksum(QByteArrayView bytes)
{
    return quint32(::crc32(0, reinterpret_cast<const Bytef *>(bytes.data()), uInt(bytes.size())));
}

JournalLine::Writer::Writer(QByteArray &out, QByteArrayView first) : m_out(out), m_start(out.size())
{
    m_out.append(first);
}

JournalLine::Writer &JournalLine::Writer::word(QByteArrayView word)
{
    m_out.append('\t');
    m_out.append(word);
    return *this;
}

JournalLine::Writer &JournalLine::Writer::number(quint64 number)
{
    appendNumber(m_out, number);
    return *this;
}

JournalLine::Writer &JournalLine::Writer::text(QStringView text, QByteArrayView prefix)
{
    m_out.append('\t');
    m_out.append(prefix);
    appendText(m_out, text);
    return *this;
}

JournalLine::Writer &JournalLine::Writer::identity(const MoveJournal::Identity &identity)
{
    appendNumber(m_out, identity.device);
    appendNumber(m_out, identity.inode, ':');
    return *this;
}

JournalLine::Writer &JournalLine::Writer::time(const QDateTime &time)
{
    if (time.isValid())
        appendNumber(m_out, quint64(time.toMSecsSinceEpoch()));
    else
        m_out.append('\t');
    return *this;
}

void JournalLine::Writer::finish()
{
    const quint32 sum = checksum(QByteArrayView(m_out).sliced(m_start));
    char tail[10] = {'\t'};
    for (int i = 0; i < 8; ++i)
        tail[1 + i] = kHex[(sum >> (28 - 4 * i)) & 15];
    tail[9] = '\n';
    m_out.append(tail, sizeof tail);
}

bool JournalLine::Fields::read(QByteArrayView line)
{
    const qsizetype tab = line.lastIndexOf('\t');
    if (tab < 0 || line.size() - tab - 1 != 8)
        return false;
    quint32 sum = 0;
    if (!readNumber(line.sliced(tab + 1), sum, 16) || sum != checksum(line.first(tab)))
        return false;
    QByteArrayView rest = line.first(tab);
    for (m_count = 0; m_count < kMax;) {
        const qsizetype next = rest.indexOf('\t');
        m_fields[m_count++] = next < 0 ? rest : rest.first(next);
        if (next < 0)
            return true;
        rest = rest.sliced(next + 1);
    }
    return false;
}

bool JournalLine::Fields::identity(int i, MoveJournal::Identity &identity) const
{
    const QByteArrayView field = m_fields[i];
    const qsizetype colon = field.indexOf(':');
    return colon > 0 && readNumber(field.first(colon), identity.device) &&
           readNumber(field.sliced(colon + 1), identity.inode);
}

bool JournalLine::Fields::time(int i, QDateTime &time) const
{
    qint64 ms = 0;
    if (m_fields[i].isEmpty())
        time = QDateTime();
    else if (number(i, ms))
        time = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
    else
        return false;
    return true;
}

QString JournalLine::Fields::decoded(QByteArrayView escaped)
{
    return escaped.contains('%')
               ? FileNames::decode(QByteArray::fromPercentEncoding(escaped.toByteArray()))
               : FileNames::decode(escaped);
}
