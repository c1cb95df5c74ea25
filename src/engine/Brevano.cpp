#include "Brevano.h"

#include "BrevanoData.h"
#include "QtScheduler.h"
#include "TidyFrequency.h"

static const QString kEnabled = QStringLiteral("Enabled");
static const QString kLocations = QStringLiteral("Locations");
static const QString kRules = QStringLiteral("Rules");

Brevano::Brevano(BrevanoData &data, Scheduler &scheduler, QObject *parent)
    : QObject(parent), m_data(data), m_scheduler(scheduler), m_paths(data),
      m_nextCheckDate(scheduler.now().addMSecs(kTimerUpdateInterval.count()))
{
}

Brevano &Brevano::sharedInstance()
{
    static Brevano engine(BrevanoData::sharedInstance(), QtScheduler::instance());
    return engine;
}

void Brevano::linkSaveData(PropertyDictionary root)
{
    const PropertyValue stored = root.value(SaveDataKey);
    if (stored.isDictionary()) {
        m_saveData = stored.toDictionary();
    } else {
        m_saveData = PropertyDictionary();
        root.insert(SaveDataKey, m_saveData);
    }
    if (!m_saveData.contains(kLocations)) {
        PropertyArray locations;
        locations.append(getDesktopFolder());
        m_saveData.insert(kLocations, locations);
    }
    if (!m_saveData.contains(kRules))
        m_saveData.insert(kRules, PropertyArray());
}

bool Brevano::getEnabled() const
{
    return m_saveData.value(kEnabled).boolValue(false);
}

void Brevano::setEnabled(bool enabled)
{
    m_saveData.insert(kEnabled, enabled);
}

QDateTime Brevano::getNextTidyDate() const
{
    return TidyFrequency::addPeriod(m_data.getLastTidyTime(), m_data.getTidyFrequency());
}

QDateTime Brevano::getEarliestTidyDate() const
{
    return std::max(m_nextCheckDate, getNextTidyDate());
}
