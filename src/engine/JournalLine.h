#pragma once

#include "MoveJournal.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

#include <array>
#include <charconv>
#include <optional>

// A line of the journal's files: fields separated by tabs, the last one the
// CRC-32 (zlib's, as gzip and PNG use it; eight lower-case hex digits) of all
// that comes before the tab in front of it; then a newline. Texts are their bytes (a path's
// bytes as the file system has them, UTF-8 or not; FileNames) with "%", every
// control byte and DEL written as "%XX", so that a field never holds a tab or
// a newline; a number is decimal; an identity "<device>:<inode>"; a time
// milliseconds since 1970 UTC (empty for none).
class JournalLine
{
public:
    // The CRC-32 of bytes.
    static quint32 checksum(QByteArrayView bytes);

    // Reads the whole of digits as a number in base.
    template <typename Number>
    static bool readNumber(QByteArrayView digits, Number &number, int base = 10)
    {
        const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number, base);
        return !digits.isEmpty() && error == std::errc() && end == digits.end();
    }

    // Writes one line, field by field, at the end of out; finish() ends every
    // line (until then out holds room beyond it).
    class Writer
    {
    public:
        Writer(QByteArray &out, QByteArrayView first);
        Writer &word(QByteArrayView word);
        Writer &number(quint64 number);
        // A text, after prefix (written as it is).
        Writer &text(QStringView text, QByteArrayView prefix = {});
        Writer &identity(const MoveJournal::Identity &identity);
        Writer &time(const QDateTime &time);
        void finish();

    private:
        // Where count more bytes can be written; put() says how many were.
        char *room(qsizetype count)
        {
            if (m_end - m_at < count)
                grow(count);
            return m_at;
        }
        void put(char *end) { m_at = end; }
        void put(QByteArrayView bytes);
        void putNumber(quint64 number, char before);
        void grow(qsizetype count);

        QByteArray &m_out;
        qsizetype m_start; // where the line starts in out
        // Bytes are written straight into out, which is longer than the
        // line until finish() cuts it back.
        char *m_at;
        char *m_end;
    };

    // The fields of a line whose checksum is right.
    class Fields
    {
    public:
        static constexpr int kMax = 16;
        // False when the checksum is wrong or there are more than kMax fields.
        bool read(QByteArrayView line);
        int count() const { return m_count; }
        QByteArrayView operator[](int i) const { return m_fields[i]; }

        template <typename Number> bool number(int i, Number &number) const
        {
            return readNumber(m_fields[i], number);
        }
        QString text(int i) const { return decoded(m_fields[i]); }
        bool identity(int i, MoveJournal::Identity &identity) const;
        bool time(int i, QDateTime &time) const;
        // The index of the field's word in words.
        template <typename Enum, std::size_t N>
        bool word(int i, const std::array<QByteArrayView, N> &words, Enum &value) const
        {
            for (std::size_t k = 0; k < N; ++k) {
                if (words[k] == m_fields[i]) {
                    value = Enum(k);
                    return true;
                }
            }
            return false;
        }

        // The text that escaped bytes hold.
        static QString decoded(QByteArrayView escaped);

    private:
        std::array<QByteArrayView, kMax> m_fields;
        int m_count = 0;
    };
};
