#pragma once

#include "PropertyValue.h"

#include <QString>

// One property-list file on disk whose root is a dictionary.
class PropertyListFile
{
public:
    enum class Status
    {
        Loaded,
        Missing,
        Malformed
    };

    struct LoadResult
    {
        Status status = Status::Missing;
        PropertyDictionary root; // a new empty dictionary unless Loaded
        QString error;
    };

    explicit PropertyListFile(const QString &path) : m_path(path) {}

    QString path() const { return m_path; }

    // An unreadable, oversized or unparsable file, or one whose root is not a
    // dictionary, is Malformed; the file itself is left untouched.
    LoadResult load() const;

    // Replaces the file atomically: a reader sees the old file or the new one.
    bool save(const PropertyDictionary &root, QString *error = nullptr) const;

    // Renames the file to its path plus suffix, replacing an older copy there.
    bool setAside(const QString &suffix, QString *error = nullptr) const;

private:
    QString m_path;
};
