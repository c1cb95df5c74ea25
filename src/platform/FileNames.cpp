#include "FileNames.h"

#include <QDir>
#include <QFile>
#include <QStringDecoder>
#include <QUrl>

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace {

constexpr char16_t kEscapeBase = 0xDC00; // + a byte from 0x80 to 0xFF

// The length of the valid UTF-8 sequence at bytes[i], or 0 when none starts
// there (a stray or overlong byte, an encoded surrogate, beyond U+10FFFF).
qsizetype sequenceLength(QByteArrayView bytes, qsizetype i)
{
    const uchar lead = uchar(bytes[i]);
    if (lead < 0x80)
        return 1;
    qsizetype length = 0;
    uchar low = 0x80, high = 0xBF; // the range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (i + length > bytes.size())
        return 0;
    for (qsizetype k = 1; k < length; ++k) {
        const uchar next = uchar(bytes[i + k]);
        if (next < (k == 1 ? low : 0x80) || next > (k == 1 ? high : 0xBF))
            return 0;
    }
    return length;
}

// Valid UTF-8 as text; a leading byte order mark is part of the name.
QString fromUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless |
                                                     QStringConverter::Flag::ConvertInitialBom);
    return decoder.decode(bytes);
}

// An escaped byte: a low surrogate from U+DC80 to U+DCFF that is not the
// second half of a pair.
bool isEscape(QStringView text, qsizetype i)
{
    const char16_t c = text[i].unicode();
    return c >= kEscapeBase + 0x80 && c <= kEscapeBase + 0xFF &&
           (i == 0 || !text[i - 1].isHighSurrogate());
}

// The one entry of folder whose name Qt decodes as shown; null when none or
// several do.
QString entryDecodedByQtAs(const QString &folder, const QString &shown)
{
    DIR *directory = ::opendir(FileNames::encode(folder).constData());
    if (!directory)
        return {};
    QString found;
    int matches = 0;
    while (const dirent *entry = ::readdir(directory)) {
        if (QFile::decodeName(entry->d_name) == shown && ++matches == 1)
            found = FileNames::decode(entry->d_name);
    }
    ::closedir(directory);
    return matches == 1 ? found : QString();
}

} // namespace

QString FileNames::decode(QByteArrayView bytes)
{
    if (bytes.isValidUtf8())
        return fromUtf8(bytes);
    QString text;
    text.reserve(bytes.size());
    qsizetype run = 0; // start of the valid bytes not yet decoded
    for (qsizetype i = 0; i < bytes.size();) {
        if (const qsizetype length = sequenceLength(bytes, i)) {
            i += length;
            continue;
        }
        text += fromUtf8(bytes.sliced(run, i - run));
        text += QChar(char16_t(kEscapeBase + uchar(bytes[i])));
        run = ++i;
    }
    text += fromUtf8(bytes.sliced(run));
    return text;
}

QByteArray FileNames::encode(const QString &path)
{
    QByteArray bytes;
    qsizetype run = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (!isEscape(path, i))
            continue;
        bytes += QStringView(path).sliced(run, i - run).toUtf8();
        bytes += char(path[i].unicode() - kEscapeBase);
        run = i + 1;
    }
    if (run == 0)
        return path.toUtf8();
    bytes += QStringView(path).sliced(run).toUtf8();
    return bytes;
}

QString FileNames::display(const QString &path)
{
    QString text = path;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isEscape(path, i))
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

bool FileNames::openForReading(QFile &file, const QString &path)
{
    const int fd = ::open(encode(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    if (file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    ::close(fd);
    return false;
}

QString FileNames::resolveQtDecoded(const QString &path)
{
    if (!path.contains(QChar::ReplacementCharacter))
        return path;
    if (!path.startsWith(u'/'))
        return {};
    QString resolved;
    for (const QString &component : path.sliced(1).split(u'/')) {
        if (!component.contains(QChar::ReplacementCharacter)) {
            resolved += u'/' + component;
            continue;
        }
        const QString name =
            entryDecodedByQtAs(resolved.isEmpty() ? QStringLiteral("/") : resolved, component);
        if (name.isNull())
            return {};
        resolved += u'/' + name;
    }
    return resolved;
}

QUrl FileNames::toUrl(const QString &path)
{
    return QUrl::fromEncoded("file://" + encode(path).toPercentEncoding("/"), QUrl::StrictMode);
}

QString FileNames::fromUrl(const QUrl &url)
{
    if (!url.isLocalFile() || !(url.host().isEmpty() || url.host() == u"localhost"))
        return {};
    const QString path = url.path(QUrl::FullyEncoded);
    if (!path.startsWith(u'/'))
        return {};
    return QDir::cleanPath(decode(QByteArray::fromPercentEncoding(path.toLatin1())));
}

QString FileNames::canonical(const QString &path)
{
    char *real = ::realpath(encode(path).constData(), nullptr);
    if (!real)
        return {};
    const QString resolved = decode(real);
    ::free(real);
    return resolved;
}
