#pragma once

#include "PropertyValue.h"
#include "ShadowDesktopPaths.h"
#include "TidyStatusSource.h"

#include <QDateTime>
#include <QObject>

class BrevanoData;
class Scheduler;

// The tidy engine. Its own settings ("Enabled", "Locations", "Rules") live in a
// dictionary inside the store's tree, so saving the store saves them too.
class Brevano : public QObject, public TidyStatusSource
{
    Q_OBJECT
public:
    static inline const QString SaveDataKey = QStringLiteral("KVBrevanoSaveData");
    static constexpr std::chrono::milliseconds kTimerUpdateInterval{61000};

    Brevano(BrevanoData &data, Scheduler &scheduler, QObject *parent = nullptr);

    static Brevano &sharedInstance();

    // Adopts the root's engine dictionary (creating it, "Locations" and "Rules"
    // when missing) as this engine's own, shared with the store.
    void linkSaveData(PropertyDictionary root);
    PropertyDictionary saveData() const { return m_saveData; }

    bool getEnabled() const override;
    void setEnabled(bool enabled);
    PropertyArray getLocations() const
    {
        return m_saveData.value(QStringLiteral("Locations")).toArray();
    }
    PropertyArray getCommonRules() const
    {
        return m_saveData.value(QStringLiteral("Rules")).toArray();
    }

    // ---- schedule dates ----
    static double getTimerUpdateInterval() { return kTimerUpdateInterval.count() / 1000.0; }
    QDateTime nextCheckDate() const { return m_nextCheckDate; }
    void setNextCheckDate(const QDateTime &date) { m_nextCheckDate = date; }
    // "LastTidy" plus the tidy frequency's period.
    QDateTime getNextTidyDate() const;
    // The later of the next check and the next due date.
    QDateTime getEarliestTidyDate() const override;

    // ---- paths ----
    const ShadowDesktopPaths &paths() const { return m_paths; }
    QString getDesktopFolder() const { return m_paths.getDesktopFolder(); }
    QString getDefaultShadowDesktopFolder() const
    {
        return m_paths.getDefaultShadowDesktopFolder();
    }
    QString getTargetFilename(const QString &name = QString()) const
    {
        return m_paths.getTargetFilename(name);
    }
    QString getTargetPathFromSourcePath(const QString &path) const
    {
        return m_paths.getTargetPathFromSourcePath(path);
    }
    QString getOriginalPathFromShadowPath(const QString &path) const
    {
        return m_paths.getOriginalPathFromShadowPath(path);
    }
    bool fileResidesInShadowDesktopRoot(const QString &path) const
    {
        return m_paths.fileResidesInShadowDesktopRoot(path);
    }
    static QString generateUniqueFilename(const QString &path)
    {
        return ShadowDesktopPaths::generateUniqueFilename(path);
    }

private:
    BrevanoData &m_data;
    Scheduler &m_scheduler;
    ShadowDesktopPaths m_paths;
    PropertyDictionary m_saveData;
    QDateTime m_nextCheckDate;
};
