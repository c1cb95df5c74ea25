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
    BrevanoData(Scheduler &scheduler, NotificationCenter &notifications, QObject *parent = nullptr);

    static BrevanoData &sharedInstance();

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
    void removeIgnoreFile(const QString &path) { ignoreList().removeIgnoreFile(path); }
    void removeIgnoreFiles(const QStringList &paths) { ignoreList().removeIgnoreFiles(paths); }
    IgnoreList ignoreList() const;
    void setAlertPresenter(AlertPresenter *alerts) { m_alerts = alerts; }

    // ---- settings ----
    quint32 getCurrentPreferencesTab() const { return uintSetting(u"Tab", 0); }
    void setCurrentPreferencesTab(quint32 tab) { setUInt(u"Tab", tab); }
    bool getShowWelcome() const { return boolSetting(u"ShowWelcome2.0", true); }
    void setShowWelcome(bool show) { setBool(u"ShowWelcome2.0", show); }
    bool getGrowlEnabled() const { return boolSetting(u"GrowlEnabled", true); }
    void setGrowlEnabled(bool on) { setBool(u"GrowlEnabled", on); }
    bool getGrowlBeforeTidy() const { return boolSetting(u"GrowlBeforeTidy", true); }
    void setGrowlBeforeTidy(bool on) { setBool(u"GrowlBeforeTidy", on); }
    bool getGrowlBeforeTidyOnlyIfFiles() const
    {
        return boolSetting(u"GrowlBeforeTidyOnlyIfFiles", true);
    }
    void setGrowlBeforeTidyOnlyIfFiles(bool on) { setBool(u"GrowlBeforeTidyOnlyIfFiles", on); }
    bool getGrowlOnComplete() const { return boolSetting(u"GrowlOnComplete", true); }
    void setGrowlOnComplete(bool on) { setBool(u"GrowlOnComplete", on); }
    bool getGrowlOnEmpty() const { return boolSetting(u"GrowlOnEmpty", true); }
    void setGrowlOnEmpty(bool on) { setBool(u"GrowlOnEmpty", on); }
    bool getGrowlDeferredTidy() const { return boolSetting(u"GrowlDeferredStart", true); }
    void setGrowlDeferredTidy(bool on) { setBool(u"GrowlDeferredStart", on); }
    bool getGrowlFileMoved() const { return boolSetting(u"GrowlFileMoved", false); }
    void setGrowlFileMoved(bool on) { setBool(u"GrowlFileMoved", on); }
    bool getGrowlFileMoveFailed() const { return boolSetting(u"GrowlFileMoveFailed", true); }
    void setGrowlFileMoveFailed(bool on) { setBool(u"GrowlFileMoveFailed", on); }
    quint32 getOperationMode() const { return uintSetting(u"OperationMode", 0); }
    void setOperationMode(quint32 mode) { setUInt(u"OperationMode", mode); }
    quint32 getOverwriteMode() const { return uintSetting(u"OverwriteMode", 3); }
    void setOverwriteMode(quint32 mode) { setUInt(u"OverwriteMode", mode); }
    quint32 getQuickFiltersMode() const { return uintSetting(u"QuickFiltersMode", 1); }
    void setQuickFiltersMode(quint32 mode) { setUInt(u"QuickFiltersMode", mode); }
    quint32 getTidyFrequency() const { return uintSetting(u"TidyFrequency", 0); }
    void setTidyFrequency(quint32 frequency) { setUInt(u"TidyFrequency", frequency); }
    QDateTime getLastTidyTime() const;
    void setLastTidyTime(const QDateTime &time);
    // The configured folder, or the default one (created when missing). A stored
    // value that is not an absolute path is not used: moves must never land
    // relative to the working directory.
    QString getShadowDesktopPath() const;
    // A null path removes the setting.
    void setShadowDesktopPath(const QString &path);
    bool getIgnoreHidden() const { return boolSetting(u"IgnoreHidden", true); }
    void setIgnoreHidden(bool on) { setBool(u"IgnoreHidden", on); }
    bool getIgnoreAliases() const { return boolSetting(u"IgnoreAliases", false); }
    void setIgnoreAliases(bool on) { setBool(u"IgnoreAliases", on); }
    bool getIgnoreFolders() const { return boolSetting(u"IgnoreFolders", false); }
    void setIgnoreFolders(bool on) { setBool(u"IgnoreFolders", on); }
    bool getAutoIgnoreRestoredFiles() const
    {
        return boolSetting(u"AutoIgnoreRestoredFiles", true);
    }
    void setAutoIgnoreRestoredFiles(bool on) { setBool(u"AutoIgnoreRestoredFiles", on); }
    bool getShowTimeUntilTidy() const { return boolSetting(u"ShowTimeUntilTidy", true); }
    void setShowTimeUntilTidy(bool on) { setBool(u"ShowTimeUntilTidy", on); }
    bool getPin() const { return boolSetting(u"PinPanel", false); }
    void setPin(bool on) { setBool(u"PinPanel", on); }
    quint32 getDateFilter() const { return uintSetting(u"ModifiedDateFilter", 0); }
    void setDateFilter(quint32 filter) { setUInt(u"ModifiedDateFilter", filter); }
    // Verbose output is switched off in this build: the getter ignores the stored value.
    bool getVerboseOutput() const { return false; }
    void setVerboseOutput(bool on) { setBool(u"VerboseOutput", on); }

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

private:
    bool boolSetting(QStringView key, bool fallback) const;
    void setBool(QStringView key, bool value);
    quint32 uintSetting(QStringView key, quint32 fallback) const;
    void setUInt(QStringView key, quint32 value);

    PropertyDictionary m_saveData;
    QuickFilterList m_quickFilters;
    StatusDisplay m_status;
    AlertPresenter *m_alerts = nullptr;
    bool m_fileIsMalformed = false;
    QString m_loadError;
};
