#pragma once

#include <QString>

class BrevanoData;

// The two folders every tidied item travels between, and the mapping of names
// between them. Whether a path lies in a folder is an exact text comparison.
class ShadowDesktopPaths
{
public:
    explicit ShadowDesktopPaths(const BrevanoData &data) : m_data(data) {}

    QString getDesktopFolder() const;
    QString getDefaultShadowDesktopFolder() const;
    // The Shadow Desktop root for a null name, else the root with name appended.
    QString getTargetFilename(const QString &name = QString()) const;
    QString getTargetPathFromSourcePath(const QString &path) const;
    // Always directly in the Desktop, whatever sub-folder path lies in.
    QString getOriginalPathFromShadowPath(const QString &path) const;
    bool fileResidesInShadowDesktopRoot(const QString &path) const;
    // path itself when free, else "name 2.ext", "name 3.ext", ... (only the last
    // extension is kept apart). Anything at a path, a dangling link too, takes it.
    static QString generateUniqueFilename(const QString &path);

    static QString lastPathComponent(const QString &path);
    static QString deletingLastPathComponent(const QString &path);

private:
    const BrevanoData &m_data;
};
