#include "DirectoryListing.h"

#include "FileNames.h"

#include <cstring>
#include <dirent.h>

QString DirectoryListing::joinedPath(const QString &prefix, const char *name)
{
    // ASCII names (nearly all) are widened straight into one exact allocation;
    // others go through the file-name decoder, which keeps bytes that are not
    // UTF-8.
    const size_t length = std::strlen(name);
    bool ascii = true;
    for (size_t i = 0; i < length && ascii; ++i)
        ascii = static_cast<unsigned char>(name[i]) < 0x80;
    if (!ascii)
        return prefix + FileNames::decode(QByteArrayView(name, qsizetype(length)));
    QString path(prefix.size() + qsizetype(length), Qt::Uninitialized);
    QChar *out = path.data();
    std::memcpy(out, prefix.constData(), size_t(prefix.size()) * sizeof(QChar));
    out += prefix.size();
    for (size_t i = 0; i < length; ++i)
        out[i] = QLatin1Char(name[i]);
    return path;
}

void DirectoryListing::forEach(const QString &folder,
                               const std::function<bool(QString &&, unsigned char)> &visit)
{
    DIR *directory = ::opendir(FileNames::encode(folder).constData());
    if (!directory)
        return;
    const QString prefix = folder.endsWith(u'/') ? folder : folder + u'/';
    while (const dirent *entry = ::readdir(directory)) {
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        if (!visit(joinedPath(prefix, name), entry->d_type))
            break;
    }
    ::closedir(directory);
}

QStringList DirectoryListing::entries(const QString &folder)
{
    QStringList paths;
    forEach(folder, [&paths](QString &&path, unsigned char) {
        paths.append(std::move(path));
        return true;
    });
    return paths;
}
