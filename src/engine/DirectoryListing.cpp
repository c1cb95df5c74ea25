#include "DirectoryListing.h"

#include "FileNames.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

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

// Linux reads the entries straight into a buffer on the stack: readdir's own
// buffer is an allocation of 32 KiB per folder, a good part of the cost of a
// small folder in a large walk.
void DirectoryListing::forEach(const QString &folder,
                               const std::function<bool(QString &&, unsigned char)> &visit,
                               Links links)
{
    const int fd =
        ::open(FileNames::encode(folder).constData(),
               O_RDONLY | O_DIRECTORY | O_CLOEXEC | (links == Links::DoNotFollow ? O_NOFOLLOW : 0));
    if (fd < 0)
        return;
    const QString prefix = folder.endsWith(u'/') ? folder : folder + u'/';
    const auto take = [&](const char *name, unsigned char type) {
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            return true;
        return visit(joinedPath(prefix, name), type);
    };
#ifdef __linux__
    alignas(dirent64) char buffer[32768];
    for (bool going = true; going;) {
        const ssize_t size = ::getdents64(fd, buffer, sizeof buffer);
        if (size <= 0)
            break;
        for (ssize_t offset = 0; going && offset < size;) {
            const auto *entry = reinterpret_cast<const dirent64 *>(buffer + offset);
            offset += entry->d_reclen;
            going = take(entry->d_name, entry->d_type);
        }
    }
    ::close(fd);
#else
    DIR *directory = ::fdopendir(fd);
    if (!directory) {
        ::close(fd);
        return;
    }
    while (const dirent *entry = ::readdir(directory)) {
        if (!take(entry->d_name, entry->d_type))
            break;
    }
    ::closedir(directory);
#endif
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
