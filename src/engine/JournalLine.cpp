#include "JournalLine.h"

#include "FileNames.h"

#include <cstring>

#include <zlib.h>

namespace {

constexpr char kHex[] = "0123456789abcdef";

bool needsEscape(uint c)
{
    return c < 0x20 || c == 0x7f || c == '%';
}

// Writes the bytes at to, escaped where they need it; the end of what it wrote
// (at most three times as many).
char *escaped(char *to, QByteArrayView bytes)
{
    for (const char byte : bytes) {
        const uchar c = uchar(byte);
        if (needsEscape(c)) {
            *to++ = '%';
            *to++ = kHex[c >> 4];
            *to++ = kHex[c & 15];
        } else {
            *to++ = char(c);
        }
    }
    return to;
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

// Writes text at to, as it is when it is plain ASCII without control
// characters or "%" (as most names are), copied four characters at a time; to
// has room for text.size() + 3 bytes. The end of what it wrote, or null when
// the text is not plain.
char *plain(char *to, QStringView text)
{
    const qsizetype count = text.size();
    const char16_t *units = text.utf16();
    // A group's units in v and its bytes in four keep their order in memory
    // whatever the byte order.
    for (qsizetype i = 0; i < count; i += 4) {
        quint64 v = 0x0041004100410041; // "AAAA": past the end counts as plain
        if (count - i >= 4)
            std::memcpy(&v, units + i, sizeof v);
        else
            std::memcpy(&v, units + i, sizeof(char16_t) * (count - i));
        if (anySpecial(v))
            return nullptr;
        const quint32 four = quint32(v & 0xff) | quint32((v >> 8) & 0xff00) |
                             quint32((v >> 16) & 0xff0000) | quint32((v >> 24) & 0xff000000);
        std::memcpy(to + i, &four, sizeof four);
    }
    return to + count;
}

} // namespace

quint32 JournalLine::checksum(QByteArrayView bytes)
{
    return quint32(crc32_z(0, reinterpret_cast<const Bytef *>(bytes.data()), size_t(bytes.size())));
}

JournalLine::Writer::Writer(QByteArray &out, QByteArrayView first)
    : m_out(out), m_start(out.size()), m_at(nullptr), m_end(nullptr)
{
    grow(256);
    put(first);
}

void JournalLine::Writer::grow(qsizetype count)
{
    const qsizetype used = m_at ? m_at - m_out.constData() : m_out.size();
    m_out.resize(std::max(used + count, used + 256));
    m_at = m_out.data() + used;
    m_end = m_out.data() + m_out.size();
}

void JournalLine::Writer::put(QByteArrayView bytes)
{
    char *to = room(bytes.size());
    std::memcpy(to, bytes.data(), size_t(bytes.size()));
    put(to + bytes.size());
}

void JournalLine::Writer::putNumber(quint64 number, char before)
{
    char *to = room(21);
    *to++ = before;
    put(std::to_chars(to, to + 20, number).ptr);
}

JournalLine::Writer &JournalLine::Writer::word(QByteArrayView word)
{
    *room(1) = '\t';
    put(m_at + 1);
    put(word);
    return *this;
}

JournalLine::Writer &JournalLine::Writer::number(quint64 number)
{
    putNumber(number, '\t');
    return *this;
}

JournalLine::Writer &JournalLine::Writer::text(QStringView text, QByteArrayView prefix)
{
    word(prefix);
    if (char *end = plain(room(text.size() + 3), text)) {
        put(end);
    } else {
        const QByteArray bytes = FileNames::encode(text.toString());
        put(escaped(room(3 * bytes.size()), bytes));
    }
    return *this;
}

JournalLine::Writer &JournalLine::Writer::identity(const MoveJournal::Identity &identity)
{
    putNumber(identity.device, '\t');
    putNumber(identity.inode, ':');
    return *this;
}

JournalLine::Writer &JournalLine::Writer::time(const QDateTime &time)
{
    if (time.isValid())
        putNumber(quint64(time.toMSecsSinceEpoch()), '\t');
    else
        word({});
    return *this;
}

void JournalLine::Writer::finish()
{
    const char *start = m_out.constData() + m_start;
    const quint32 sum = checksum(QByteArrayView(start, m_at - start));
    char *to = room(10);
    *to++ = '\t';
    for (int i = 0; i < 8; ++i)
        *to++ = kHex[(sum >> (28 - 4 * i)) & 15];
    *to++ = '\n';
    m_out.resize(to - m_out.constData());
}

bool JournalLine::Fields::read(QByteArrayView line)
{
    // The checksum is the last nine bytes: a tab and eight digits.
    const qsizetype tab = line.size() - 9;
    quint32 sum = 0;
    if (tab < 0 || line[tab] != '\t' || !readNumber(line.sliced(tab + 1), sum, 16) ||
        sum != checksum(line.first(tab)))
        return false;
    // Fields are short: a byte at a time finds their ends sooner than a search.
    const char *bytes = line.data();
    m_count = 0;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= tab; ++i) {
        if (i < tab && bytes[i] != '\t')
            continue;
        if (m_count == kMax)
            return false;
        m_fields[m_count++] = QByteArrayView(bytes + start, i - start);
        start = i + 1;
    }
    return true;
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
