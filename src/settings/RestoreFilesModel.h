#pragma once

#include <QMap>
#include <QStringList>

class Brevano;

// What the Restore Files window lists and restores: the names directly in the
// Shadow Desktop (hidden ones too), sorted by character code, each with a tick.
class RestoreFilesModel
{
public:
    explicit RestoreFilesModel(Brevano &engine) : m_engine(engine) {}

    // Reads the names once; the list is not refreshed while the window is open.
    void rebuildData(const QString &shadowDesktop);
    const QStringList &sortedFilenames() const { return m_sortedFilenames; }
    QString pathOf(const QString &name) const { return m_shadowDesktop + u'/' + name; }
    bool restoreFile(const QString &name) const { return m_checkStatus.value(name, false); }
    void setRestoreFile(const QString &name, bool restore);
    void setAll(bool restore);
    // Restores every ticked name; returns how many could not be restored.
    int applyRestoreSettings(bool addToIgnore);

private:
    Brevano &m_engine;
    QString m_shadowDesktop;
    QStringList m_sortedFilenames;
    QMap<QString, bool> m_checkStatus;
};
