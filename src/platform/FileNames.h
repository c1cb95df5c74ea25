#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

class QFile;
class QUrl;

// File names are bytes; paths are held as QString. Valid UTF-8 decodes as
// usual, and each byte of a sequence that is not valid UTF-8 becomes the lone
// surrogate U+DC80 + (byte - 0x80), which valid UTF-8 can never produce, so
// encode(decode(bytes)) gives the bytes back exactly. Every path that reaches
// the operating system goes through encode; only texts shown to people use
// display.
class FileNames
{
public:
    static QByteArray encode(const QString &path);
    static QString decode(QByteArrayView bytes);
    // The path with each undecodable byte shown as U+FFFD.
    static QString display(const QString &path);
    // The real path behind one that Qt's file classes made (a file dialog's
    // answer, say): they decode names as UTF-8 with U+FFFD for what is not, so
    // such a path no longer reaches its item. Each component holding U+FFFD is
    // looked up among its folder's entries by how Qt decodes their names. A
    // null string when one matches no entry or more than one, or when a
    // relative path holds U+FFFD.
    static QString resolveQtDecoded(const QString &path);
    // Opens path for reading by its bytes (QFile would look for the decoded
    // name), without blocking should it be a pipe; false when it cannot.
    static bool openForReading(QFile &file, const QString &path);
    // A file URL of the path's bytes: QUrl::fromLocalFile would turn bytes
    // that are not UTF-8 into U+FFFD. The path must be absolute.
    static QUrl toUrl(const QString &path);
    // The path a file URL names, byte for byte and cleaned (no "//", "." or
    // ".." steps, no trailing "/"); a null string for a URL that names no
    // local file (another scheme, another host).
    static QString fromUrl(const QUrl &url);
    // The absolute path with every link, "." and ".." resolved, by its bytes;
    // a null string when it does not exist.
    static QString canonical(const QString &path);
};
