#include "PropertyListFile.h"

#include "PropertyListReader.h"
#include "PropertyListWriter.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>

#include <cstdio>

PropertyListFile::LoadResult PropertyListFile::load() const
{
    LoadResult result;
    QFile file(m_path);
    if (!QFileInfo::exists(m_path) && !QFileInfo(m_path).isSymLink())
        return result;
    result.status = Status::Malformed;
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = file.errorString();
        return result;
    }
    // Read one byte past the bound so that an oversized file is told apart.
    const QByteArray bytes = file.read(PropertyListReader::kDefaultMaxBytes + 1);
    PropertyListReader reader;
    const auto root = reader.read(bytes);
    if (!root) {
        result.error = reader.errorString();
    } else if (!root->isDictionary()) {
        result.error = QStringLiteral("the top-level value is not a dictionary");
    } else {
        result.status = Status::Loaded;
        result.root = root->toDictionary();
    }
    return result;
}

bool PropertyListFile::save(const PropertyDictionary &root, QString *error) const
{
    const auto bytes = PropertyListWriter::write(root);
    if (!bytes) {
        if (error)
            *error = QStringLiteral("the data is nested too deeply to be written");
        return false;
    }
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() || !file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

bool PropertyListFile::setAside(const QString &suffix, QString *error) const
{
    const QString target = m_path + suffix;
    // rename(2) replaces the older copy in one step; QFile::rename would refuse.
    if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(target).constData()) !=
        0) {
        if (error)
            *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    return true;
}
