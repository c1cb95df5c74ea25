#pragma once

#include "AlertPresenter.h"
#include "IgnoreList.h"
#include "PropertyListFile.h"
#include "QuickFilterList.h"
#include "StatusDisplay.h"

#include <QDateTime>
#include <QObject>

class NotificationCenter;
class Scheduler;
class TidyStatusSource;

// The one store of everything Brevano remembers: settings, quick filters, the
// ignore list and the engine's own dictionary, all in one tree that is saved
// whole to "Brevano.data". Getters supply their default for an absent key;
// setters change memory only and the caller decides when to save.
class BrevanoData : public QObject
{
    Q_OBJECT
public:
    // alerts shows the skipped-items alert of addIgnoreFiles.
    BrevanoData(Scheduler &scheduler, NotificationCenter &notifications, AlertPresenter &alerts,
                QObject *parent = nullptr);

    // The process's store, as the composition root registered it.
    static BrevanoData &sharedInstance();
    static void setSharedInstance(BrevanoData *store);

    // ---- data file ----
    void loadDataFile();
    // Sets a malformed file aside as "Brevano.data.bad" before replacing it.
    bool saveDataFile(QString *error = nullptr);
    QString pathForDataFile() const
    {
        return getApplicationSupportFilename(QStringLiteral("Brevano.data"));
    }
    QString getApplicationSupportFilename(const QString &name) const;
    // Why the last load fell back to the first-run state; empty when it did not.
    QString loadError() const { return m_loadError; }

    PropertyDictionary saveData() const { return m_saveData; }
    void setSaveData(const PropertyDictionary &root);

    // ---- quick filters ----
    PropertyArray getQuickFilters() { return m_quickFilters.getQuickFilters(); }
    const QList<QuickFilterList::ItemPointer> &filterItems() const
    {
        return m_quickFilters.filterItems();
    }
    void setFilterItems(const QList<QuickFilterList::ItemPointer> &items)
    {
        m_quickFilters.setFilterItems(items);
    }
    void addQuickFilter(const QuickFilterList::ItemPointer &item)
    {
        m_quickFilters.addQuickFilter(item);
    }
    void removeQuickFilter(qsizetype index) { m_quickFilters.removeQuickFilter(index); }
    bool isDefaultFilter(QuickFilterItem &item) const
    {
        return m_quickFilters.isDefaultFilter(item);
    }

    // ---- ignore list ----
    PropertyDictionary getIgnoreFilesDictionary()
    {
        return ignoreList().getIgnoreFilesDictionary();
    }
    // Looking up needs no Desktop folder (finding it reads the XDG user directories).
    bool shouldIgnoreFile(const QString &path) const
    {
        return IgnoreList(m_saveData, QString()).shouldIgnoreFile(path);
    }
    // Returns how many paths were skipped, after the alert that says so.
    qsizetype addIgnoreFiles(const QStringList &paths);
    // The same, leaving it to the caller to say what was skipped.
    qsizetype addIgnoreFilesWithoutAlert(const QStringList &paths);
    void removeIgnoreFile(const QString &path) { removeIgnoreFiles({path}); }
    void removeIgnoreFiles(const QStringList &paths);
    IgnoreList ignoreList() const;

    // ---- settings ----
    quint32 getCurrentPreferencesTab() const { return uintSetting(QStringLiteral("Tab"), 0); }
    void setCurrentPreferencesTab(quint32 tab) { setUInt(QStringLiteral("Tab"), tab); }
    bool getShowWelcome() const { return boolSetting(QStringLiteral("ShowWelcome2.0"), true); }
    void setShowWelcome(bool show) { setBool(QStringLiteral("ShowWelcome2.0"), show); }
    bool getGrowlEnabled() const { return boolSetting(QStringLiteral("GrowlEnabled"), true); }
    void setGrowlEnabled(bool on) { setBool(QStringLiteral("GrowlEnabled"), on); }
    bool getGrowlBeforeTidy() const { return boolSetting(QStringLiteral("GrowlBeforeTidy"), true); }
    void setGrowlBeforeTidy(bool on) { setBool(QStringLiteral("GrowlBeforeTidy"), on); }
    bool getGrowlBeforeTidyOnlyIfFiles() const
    {
        return boolSetting(QStringLiteral("GrowlBeforeTidyOnlyIfFiles"), true);
    }
    void setGrowlBeforeTidyOnlyIfFiles(bool on)
    {
        setBool(QStringLiteral("GrowlBeforeTidyOnlyIfFiles"), on);
    }
    bool getGrowlOnComplete() const { return boolSetting(QStringLiteral("GrowlOnComplete"), true); }
    void setGrowlOnComplete(bool on) { setBool(QStringLiteral("GrowlOnComplete"), on); }
    bool getGrowlOnEmpty() const { return boolSetting(QStringLiteral("GrowlOnEmpty"), true); }
    void setGrowlOnEmpty(bool on) { setBool(QStringLiteral("GrowlOnEmpty"), on); }
    bool getGrowlDeferredTidy() const
    {
        return boolSetting(QStringLiteral("GrowlDeferredStart"), true);
    }
    void setGrowlDeferredTidy(bool on) { setBool(QStringLiteral("GrowlDeferredStart"), on); }
    bool getGrowlFileMoved() const { return boolSetting(QStringLiteral("GrowlFileMoved"), false); }
    void setGrowlFileMoved(bool on) { setBool(QStringLiteral("GrowlFileMoved"), on); }
    bool getGrowlFileMoveFailed() const
    {
        return boolSetting(QStringLiteral("GrowlFileMoveFailed"), true);
    }
    void setGrowlFileMoveFailed(bool on) { setBool(QStringLiteral("GrowlFileMoveFailed"), on); }
    quint32 getOperationMode() const { return uintSetting(QStringLiteral("OperationMode"), 0); }
    void setOperationMode(quint32 mode) { setUInt(QStringLiteral("OperationMode"), mode); }
    quint32 getOverwriteMode() const { return uintSetting(QStringLiteral("OverwriteMode"), 3); }
    void setOverwriteMode(quint32 mode) { setUInt(QStringLiteral("OverwriteMode"), mode); }
    quint32 getQuickFiltersMode() const
    {
        return uintSetting(QStringLiteral("QuickFiltersMode"), 1);
    }
    void setQuickFiltersMode(quint32 mode) { setUInt(QStringLiteral("QuickFiltersMode"), mode); }
    quint32 getTidyFrequency() const { return uintSetting(QStringLiteral("TidyFrequency"), 0); }
    void setTidyFrequency(quint32 frequency)
    {
        setUInt(QStringLiteral("TidyFrequency"), frequency);
    }
    QDateTime getLastTidyTime() const;
    void setLastTidyTime(const QDateTime &time);
    // The configured folder, or the default one (created when missing). A stored
    // value that is not an absolute path is not used: moves must never land
    // relative to the working directory.
    QString getShadowDesktopPath() const;
    // A null path removes the setting.
    void setShadowDesktopPath(const QString &path);
    bool getIgnoreHidden() const { return boolSetting(QStringLiteral("IgnoreHidden"), true); }
    void setIgnoreHidden(bool on) { setBool(QStringLiteral("IgnoreHidden"), on); }
    bool getIgnoreAliases() const { return boolSetting(QStringLiteral("IgnoreAliases"), false); }
    void setIgnoreAliases(bool on) { setBool(QStringLiteral("IgnoreAliases"), on); }
    bool getIgnoreFolders() const { return boolSetting(QStringLiteral("IgnoreFolders"), false); }
    void setIgnoreFolders(bool on) { setBool(QStringLiteral("IgnoreFolders"), on); }
    bool getAutoIgnoreRestoredFiles() const
    {
        return boolSetting(QStringLiteral("AutoIgnoreRestoredFiles"), true);
    }
    void setAutoIgnoreRestoredFiles(bool on)
    {
        setBool(QStringLiteral("AutoIgnoreRestoredFiles"), on);
    }
    bool getShowTimeUntilTidy() const
    {
        return boolSetting(QStringLiteral("ShowTimeUntilTidy"), true);
    }
    void setShowTimeUntilTidy(bool on) { setBool(QStringLiteral("ShowTimeUntilTidy"), on); }
    bool getPin() const { return boolSetting(QStringLiteral("PinPanel"), false); }
    void setPin(bool on) { setBool(QStringLiteral("PinPanel"), on); }
    quint32 getDateFilter() const { return uintSetting(QStringLiteral("ModifiedDateFilter"), 0); }
    void setDateFilter(quint32 filter) { setUInt(QStringLiteral("ModifiedDateFilter"), filter); }
    // Verbose output is switched off in this build: the getter ignores the stored value.
    bool getVerboseOutput() const { return false; }
    void setVerboseOutput(bool on) { setBool(QStringLiteral("VerboseOutput"), on); }

    QString getTidyIntervalText() const;

    // ---- status display ----
    StatusDisplay &statusDisplay() { return m_status; }
    void setTidyStatusSource(const TidyStatusSource *source) { m_status.setSource(source); }
    qint32 currentStatusIcon() const { return m_status.currentStatusIcon(); }
    void setCurrentStatusIcon(qint32 state) { m_status.setCurrentStatusIcon(state); }
    void setStatusIcon(qint32 state) { m_status.setStatusIcon(state, getTidyIntervalText()); }
    void updateStatusIcon() { m_status.updateStatusIcon(getTidyIntervalText()); }
    void startUpdatingTimeRemaining() { m_status.startUpdatingTimeRemaining(); }
    void stopUpdatingTimeRemaining() { m_status.stopUpdatingTimeRemaining(); }
    void updateTimeRemaining() { m_status.updateTimeRemaining(); }

    static QString getAppVersion();

    // "Version Unobtainable" when the system's three version numbers cannot be had.
    static QString getOSVersion();

signals:
    // The ignore list was changed through this store (windows showing it follow).
    void ignoreListChanged();

private:
    // Keys come as literals, so no string is built for a lookup.
    bool boolSetting(const QString &key, bool fallback) const;
    void setBool(const QString &key, bool value);
    quint32 uintSetting(const QString &key, quint32 fallback) const;
    void setUInt(const QString &key, quint32 value);

    PropertyDictionary m_saveData;
    QuickFilterList m_quickFilters;
    StatusDisplay m_status;
    AlertPresenter &m_alerts;
    bool m_fileIsMalformed = false;
    QString m_loadError;
};
