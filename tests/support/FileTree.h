#pragma once

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <unistd.h>

// A file's bytes; empty when it cannot be read.
inline QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The link's own text, not the path it resolves to.
inline QString rawLinkTarget(const QString &path)
{
    char target[4096];
    const ssize_t length = ::readlink(QFile::encodeName(path).constData(), target, sizeof target);
    return length < 0 ? QString() : QFile::decodeName(QByteArray(target, int(length)));
}

// A fingerprint of a tree: every entry's relative path with its kind, size,
// permissions, modification time, link target and content hash. Two trees with
// equal fingerprints hold the same data.
inline QMap<QString, QString> fingerprint(const QString &root)
{
    QMap<QString, QString> entries;
    const auto describe = [](const QFileInfo &info) {
        QString text = info.isSymLink() ? "link->" + rawLinkTarget(info.filePath())
                       : info.isDir()   ? QStringLiteral("dir")
                                        : QStringLiteral("file");
        text += QStringLiteral(" perms=%1").arg(int(info.permissions()), 0, 16);
        if (!info.isSymLink())
            text += " mtime=" + QString::number(info.lastModified().toSecsSinceEpoch());
        if (info.isFile() && !info.isSymLink()) {
            QFile file(info.filePath());
            file.open(QIODevice::ReadOnly);
            text += " sha=" +
                    QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex();
        }
        return text;
    };
    const QFileInfo top(root);
    entries.insert(QStringLiteral("."), describe(top));
    if (top.isDir() && !top.isSymLink()) {
        QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            entries.insert(it.filePath().mid(root.size()), describe(it.fileInfo()));
        }
    }
    return entries;
}
