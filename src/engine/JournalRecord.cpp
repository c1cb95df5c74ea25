#include "JournalRecord.h"

#include "FileNames.h"

#include <zlib.h>

#include <array>
#include <charconv>
#include <cstring>

// The journal is text, one record a line. A line is fields separated by tabs,
// the last one the CRC-32 (zlib's crc32, eight lower-case hex digits) of all
// that comes before the tab in front of it; then a newline:
//
//   brevano-journal  1      <next run>                        (the first line)
//   begin     <run>  <kind> <detail>  <time>
//   intent    <run>  <seq>  <source>  <target>  <source identity>
//   partial   <run>  <seq>  <path>
//   copied    <run>  <seq>  <path>    <identity of the copy>
//   aside     <run>  <seq>  <path>
//   outcome   <run>  <seq>  <status>  <target>  <target identity>  <message>
//   deferred  <run>  <source>
//   end       <run>  <time> <recovered: 0 or 1>
//
// <run>, <seq> and the next run are decimal numbers; <kind> is tidy, undo,
// restore, drop or trash; <status> is pending, moved, failed, deferred,
// incomplete or skipped; an identity is "<device>:<inode>" ("0:0" for none);
// a time is milliseconds since 1970 UTC (empty for none). Paths, the detail
// and the message are their bytes (a path's bytes as the file system has them,
// UTF-8 or not; FileNames) with "%", every control byte and DEL written as
// "%XX", so that a field never holds a tab or a newline.

namespace {

using Identity = MoveJournal::Identity;

constexpr QByteArrayView kMagic = "brevano-journal";
constexpr QByteArrayView kVersion = "1";
constexpr char kHex[] = "0123456789abcdef";

constexpr std::array<QByteArrayView, 8> kTypes = {"begin", "intent",  "partial",  "copied",
                                                  "aside", "outcome", "deferred", "end"};
// How many fields each type of line has, its type included.
constexpr std::array<int, 8> kFieldCounts = {5, 6, 4, 5, 4, 7, 3, 4};
constexpr std::array<QByteArrayView, 5> kKinds = {"tidy", "undo", "restore", "drop", "trash"};
constexpr std::array<QByteArrayView, 6> kStatuses = {"pending",  "moved",      "failed",
                                                     "deferred", "incomplete", "skipped"};

template <std::size_t N>
std::optional<int> indexIn(const std::array<QByteArrayView, N> &words, QByteArrayView word)
{
    for (std::size_t i = 0; i < N; ++i) {
        if (words[i] == word)
            return int(i);
    }
    return std::nullopt;
}

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
void appendText(QByteArray &out, const QString &text)
{
    const qsizetype start = out.size();
    const qsizetype count = text.size();
    const char16_t *units = reinterpret_cast<const char16_t *>(text.constData());
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
    const QByteArray bytes = FileNames::encode(text);
    appendEscaped(out, bytes.constData(), bytes.size());
}

// Appends a separator (a tab, say) and the number.
void appendNumber(QByteArray &out, quint64 number, char before = '\t')
{
    char digits[24] = {before};
    const auto end = std::to_chars(digits + 1, digits + sizeof digits, number).ptr;
    out.append(digits, end - digits);
}

// Reads the whole of digits as a number in base.
template <typename Number> bool readNumber(QByteArrayView digits, Number &number, int base = 10)
{
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number, base);
    return !digits.isEmpty() && error == std::errc() && end == digits.end();
}

quint32 checksum(QByteArrayView bytes)
{
    return quint32(::crc32(0, reinterpret_cast<const Bytef *>(bytes.data()), uInt(bytes.size())));
}

// Writes one line field by field.
class LineWriter
{
public:
    LineWriter(QByteArray &out, QByteArrayView first) : m_out(out), m_start(out.size())
    {
        m_out.append(first);
    }
    LineWriter &word(QByteArrayView word)
    {
        m_out.append('\t');
        m_out.append(word);
        return *this;
    }
    LineWriter &number(quint64 number)
    {
        appendNumber(m_out, number);
        return *this;
    }
    LineWriter &text(const QString &text)
    {
        m_out.append('\t');
        appendText(m_out, text);
        return *this;
    }
    LineWriter &identity(const Identity &identity)
    {
        appendNumber(m_out, identity.device);
        appendNumber(m_out, identity.inode, ':');
        return *this;
    }
    LineWriter &time(const QDateTime &time)
    {
        if (time.isValid())
            appendNumber(m_out, quint64(time.toMSecsSinceEpoch()));
        else
            m_out.append('\t');
        return *this;
    }
    void finish()
    {
        const quint32 sum = checksum(QByteArrayView(m_out).sliced(m_start));
        char tail[10] = {'\t'};
        for (int i = 0; i < 8; ++i)
            tail[1 + i] = kHex[(sum >> (28 - 4 * i)) & 15];
        tail[9] = '\n';
        m_out.append(tail, sizeof tail);
    }

private:
    QByteArray &m_out;
    qsizetype m_start;
};

// The fields of a line whose checksum is right.
class LineFields
{
public:
    bool read(QByteArrayView line)
    {
        const qsizetype tab = line.lastIndexOf('\t');
        if (tab < 0 || line.size() - tab - 1 != 8)
            return false;
        quint32 sum = 0;
        if (!readNumber(line.sliced(tab + 1), sum, 16) || sum != checksum(line.first(tab)))
            return false;
        QByteArrayView rest = line.first(tab);
        for (m_count = 0; m_count < int(m_fields.size());) {
            const qsizetype next = rest.indexOf('\t');
            m_fields[m_count++] = next < 0 ? rest : rest.first(next);
            if (next < 0)
                return true;
            rest = rest.sliced(next + 1);
        }
        return false; // more fields than any record has
    }
    int count() const { return m_count; }
    QByteArrayView operator[](int i) const { return m_fields[i]; }

    template <typename Number> bool number(int i, Number &number) const
    {
        return readNumber(m_fields[i], number);
    }
    // Paths and messages are the costly part to read: where no one needs
    // them, they are left empty.
    void skipTexts(bool skip) { m_skipTexts = skip; }
    bool text(int i, QString &text, bool always = false) const
    {
        if (m_skipTexts && !always)
            return true;
        const QByteArrayView field = m_fields[i];
        text = field.contains('%')
                   ? FileNames::decode(QByteArray::fromPercentEncoding(field.toByteArray()))
                   : FileNames::decode(field);
        return true;
    }
    bool identity(int i, Identity &identity) const
    {
        const QByteArrayView field = m_fields[i];
        const qsizetype colon = field.indexOf(':');
        return colon > 0 && readNumber(field.first(colon), identity.device) &&
               readNumber(field.sliced(colon + 1), identity.inode);
    }
    bool time(int i, QDateTime &time) const
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
    template <typename Enum, std::size_t N>
    bool word(int i, const std::array<QByteArrayView, N> &words, Enum &value) const
    {
        const std::optional<int> index = indexIn(words, m_fields[i]);
        if (index)
            value = Enum(*index);
        return index.has_value();
    }

private:
    std::array<QByteArrayView, 8> m_fields;
    int m_count = 0;
    bool m_skipTexts = false;
};

} // namespace

void JournalRecord::appendTo(QByteArray &out) const
{
    LineWriter line(out, kTypes[int(type)]);
    line.number(run);
    switch (type) {
    case Type::Begin:
        line.word(kKinds[int(kind)]).text(text).time(time);
        break;
    case Type::Intent:
        line.number(seq).text(path).text(target).identity(identity);
        break;
    case Type::Partial:
    case Type::Aside:
        line.number(seq).text(path);
        break;
    case Type::Copied:
        line.number(seq).text(path).identity(identity);
        break;
    case Type::Outcome:
        line.number(seq).word(kStatuses[int(status)]).text(target).identity(identity).text(text);
        break;
    case Type::Deferred:
        line.text(path);
        break;
    case Type::End:
        line.time(time).word(recovered ? "1" : "0");
        break;
    }
    line.finish();
}

std::optional<JournalRecord> JournalRecord::parse(QByteArrayView line,
                                                  const std::function<bool(quint64)> &withTexts)
{
    LineFields f;
    JournalRecord r;
    if (!f.read(line) || !f.word(0, kTypes, r.type) || f.count() != kFieldCounts[int(r.type)] ||
        !f.number(1, r.run))
        return std::nullopt;
    f.skipTexts(withTexts && !withTexts(r.run));
    bool ok = false;
    switch (r.type) {
    case Type::Begin:
        ok = f.word(2, kKinds, r.kind) && f.text(3, r.text, true) && f.time(4, r.time);
        break;
    case Type::Intent:
        ok = f.number(2, r.seq) && f.text(3, r.path) && f.text(4, r.target) &&
             f.identity(5, r.identity);
        break;
    case Type::Partial:
    case Type::Aside:
        ok = f.number(2, r.seq) && f.text(3, r.path);
        break;
    case Type::Copied:
        ok = f.number(2, r.seq) && f.text(3, r.path) && f.identity(4, r.identity);
        break;
    case Type::Outcome:
        ok = f.number(2, r.seq) && f.word(3, kStatuses, r.status) && f.text(4, r.target) &&
             f.identity(5, r.identity) && f.text(6, r.text);
        break;
    case Type::Deferred:
        ok = f.text(2, r.path);
        break;
    case Type::End:
        ok = f.time(2, r.time) && (f[3] == "0" || f[3] == "1");
        r.recovered = f[3] == "1";
        break;
    }
    return ok ? std::optional(r) : std::nullopt;
}

std::optional<quint64> JournalRecord::runOf(QByteArrayView line)
{
    LineFields f;
    quint64 run = 0;
    Type type;
    if (f.read(line) && f.word(0, kTypes, type) && f.count() == kFieldCounts[int(type)] &&
        f.number(1, run))
        return run;
    return std::nullopt;
}

std::optional<quint64> JournalRecord::runEndedBy(QByteArrayView line)
{
    if (!line.startsWith(kTypes[int(Type::End)]))
        return std::nullopt;
    const std::optional<JournalRecord> record = parse(line);
    return record && record->type == Type::End ? std::optional(record->run) : std::nullopt;
}

QByteArray JournalRecord::header(quint64 nextRun)
{
    QByteArray out;
    LineWriter(out, kMagic).word(kVersion).number(nextRun).finish();
    return out;
}

std::optional<quint64> JournalRecord::parseHeader(QByteArrayView line)
{
    LineFields f;
    quint64 next = 0;
    if (f.read(line) && f.count() == 3 && f[0] == kMagic && f[1] == kVersion && f.number(2, next))
        return next;
    return std::nullopt;
}
