#include "BrevanoData.h"

#include "AppFolders.h"
#include "BrevanoVersion.h"
#include "NotificationCenter.h"
#include "SystemInfo.h"
#include "TidyFrequency.h"

#include <QDir>
#include <QTimeZone>

static const QString kLastTidy = QStringLiteral("LastTidy");
static const QString kShadowDesktopPath = QStringLiteral("ShadowDesktopPath");

static BrevanoData *g_sharedStore = nullptr;

BrevanoData::BrevanoData(Scheduler &scheduler, NotificationCenter &notifications,
                         AlertPresenter &alerts, QObject *parent)
    : QObject(parent), m_status(scheduler, notifications), m_alerts(alerts)
{
    m_quickFilters.attach(m_saveData);
}

BrevanoData &BrevanoData::sharedInstance()
{
    Q_ASSERT(g_sharedStore);
    return *g_sharedStore;
}

void BrevanoData::setSharedInstance(BrevanoData *store)
{
    g_sharedStore = store;
}

QString BrevanoData::getApplicationSupportFilename(const QString &name) const
{
    return AppFolders::brevanoSupportFolder() + u'/' + name;
}

void BrevanoData::loadDataFile()
{
    const PropertyListFile::LoadResult result = PropertyListFile(pathForDataFile()).load();
    // The reader builds a fresh tree, so the store owns every container in it.
    m_saveData = result.root;
    m_fileIsMalformed = result.status == PropertyListFile::Status::Malformed;
    m_loadError = result.error;
    m_quickFilters.load(m_saveData);
}

bool BrevanoData::saveDataFile(QString *error)
{
    const PropertyListFile file(pathForDataFile());
    if (m_fileIsMalformed) {
        // Keep what could not be read; never write over it.
        if (!file.setAside(QStringLiteral(".bad"), error))
            return false;
        m_fileIsMalformed = false;
    }
    return file.save(m_saveData, error);
}

void BrevanoData::setSaveData(const PropertyDictionary &root)
{
    m_saveData = root;
    m_quickFilters.attach(m_saveData);
}

IgnoreList BrevanoData::ignoreList() const
{
    return IgnoreList(m_saveData, AppFolders::desktopFolder());
}

qsizetype BrevanoData::addIgnoreFiles(const QStringList &paths)
{
    const qsizetype skipped = addIgnoreFilesWithoutAlert(paths);
    if (skipped > 0)
        m_alerts.runModal(Alert{IgnoreList::skippedAlertTitle(skipped), QString()});
    return skipped;
}

qsizetype BrevanoData::addIgnoreFilesWithoutAlert(const QStringList &paths)
{
    const qsizetype skipped = ignoreList().addIgnoreFiles(paths);
    if (skipped < paths.size())
        emit ignoreListChanged();
    return skipped;
}

void BrevanoData::removeIgnoreFiles(const QStringList &paths)
{
    ignoreList().removeIgnoreFiles(paths);
    if (!paths.isEmpty())
        emit ignoreListChanged();
}

QDateTime BrevanoData::getLastTidyTime() const
{
    const PropertyValue stored = m_saveData.value(kLastTidy);
    if (stored.type() == PropertyValue::Type::Date)
        return stored.toDate();
    return QDateTime::fromSecsSinceEpoch(0, QTimeZone::utc());
}

void BrevanoData::setLastTidyTime(const QDateTime &time)
{
    m_saveData.insert(kLastTidy, time);
}

QString BrevanoData::getShadowDesktopPath() const
{
    const PropertyValue stored = m_saveData.value(kShadowDesktopPath);
    if (stored.isString() && QDir::isAbsolutePath(stored.toString()))
        return stored.toString();
    return AppFolders::defaultShadowDesktopFolder();
}

void BrevanoData::setShadowDesktopPath(const QString &path)
{
    if (path.isNull())
        m_saveData.remove(kShadowDesktopPath);
    else
        m_saveData.insert(kShadowDesktopPath, path);
}

QString BrevanoData::getTidyIntervalText() const
{
    return TidyFrequency::intervalText(getTidyFrequency());
}

QString BrevanoData::getAppVersion()
{
    return QStringLiteral("%1 (%2)").arg(QStringLiteral(BREVANO_VERSION),
                                         QStringLiteral(BREVANO_BUILD));
}

QString BrevanoData::getOSVersion()
{
    const QString version = SystemInfo::osVersion();
    return version.isEmpty() ? QStringLiteral("Version Unobtainable") : version;
}

bool BrevanoData::boolSetting(const QString &key, bool fallback) const
{
    return m_saveData.value(key).boolValue(fallback);
}

void BrevanoData::setBool(const QString &key, bool value)
{
    m_saveData.insert(key, value);
}

quint32 BrevanoData::uintSetting(const QString &key, quint32 fallback) const
{
    // Integers are read as 32-bit unsigned values, truncated.
    return quint32(m_saveData.value(key).integerValue(fallback));
}

void BrevanoData::setUInt(const QString &key, quint32 value)
{
    m_saveData.insert(key, qint64(value));
}
