#include "QuickFilterItem.h"

#include "Calendar.h"
#include "FileStat.h"

#include <QFileInfo>
#include <QUuid>

static const QString kName = QStringLiteral("Name");
static const QString kUid = QStringLiteral("UID");
static const QString kDateValue = QStringLiteral("DateValue");
static const QString kFileExtensions = QStringLiteral("FileExtensions");

QuickFilterItem::QuickFilterItem(const std::optional<PropertyDictionary> &record)
    : m_dataDictionary(record.value_or(PropertyDictionary())),
      m_tempDictionary(m_dataDictionary.shallowCopy()), m_createdItem(!record)
{
}

QuickFilterItem &QuickFilterItem::operator=(const QuickFilterItem &other)
{
    if (this != &other)
        *this = QuickFilterItem(other.m_dataDictionary);
    return *this;
}

QString QuickFilterItem::createUid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QString QuickFilterItem::getName() const
{
    const PropertyValue name = m_tempDictionary.value(kName);
    return name.isString() ? name.toString() : QString();
}

void QuickFilterItem::setName(const QString &name)
{
    if (name.isNull())
        m_tempDictionary.remove(kName);
    else
        m_tempDictionary.insert(kName, name);
}

quint32 QuickFilterItem::uintValue(const QString &key, quint32 fallback) const
{
    return quint32(m_tempDictionary.value(key).integerValue(fallback));
}

void QuickFilterItem::setUInt(const QString &key, quint32 value)
{
    m_tempDictionary.insert(key, qint64(value));
}

qint64 QuickFilterItem::getDateValue() const
{
    return m_tempDictionary.value(kDateValue).integerValue(7);
}

void QuickFilterItem::setDateValue(qint64 value)
{
    m_tempDictionary.insert(kDateValue, value);
}

PropertyArray QuickFilterItem::fileExtensions()
{
    return m_tempDictionary.arrayForKey(kFileExtensions);
}

QString QuickFilterItem::getUid()
{
    const PropertyValue stored = m_tempDictionary.value(kUid);
    if (stored.isString() && !stored.toString().isEmpty())
        return stored.toString();
    const QString uid = createUid();
    m_tempDictionary.insert(kUid, uid);
    m_dataDictionary.insert(kUid, uid);
    return uid;
}

void QuickFilterItem::applyChanges()
{
    m_dataDictionary.clear();
    for (const auto &[key, value] : m_tempDictionary)
        m_dataDictionary.insert(key, value);
}

void QuickFilterItem::discardChanges()
{
    m_tempDictionary = m_dataDictionary.shallowCopy();
}

QString QuickFilterItem::getExtensionsText() const
{
    QStringList texts;
    for (const PropertyValue &extension : m_tempDictionary.value(kFileExtensions).toArray())
        texts.append(extension.toString().toLower());
    return texts.join(u',');
}

bool QuickFilterItem::filePassesFilter(const QString &path, const QDateTime &now) const
{
    if (!filePassesDateFilter(path, now))
        return false;
    const PropertyArray extensions = m_tempDictionary.value(kFileExtensions).toArray();
    if (extensions.isEmpty())
        return true;
    const QString name = path.section(u'/', -1);
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString extension = dot < 0 ? QString() : name.mid(dot + 1);
    for (const PropertyValue &listed : extensions) {
        if (listed.isString() && listed.toString() == extension)
            return true;
    }
    return false;
}

bool QuickFilterItem::filePassesDateFilter(const QString &path, const QDateTime &now) const
{
    if (getDateMode() == DateModeNone)
        return true;
    const auto modified = FileStat::modificationDate(path);
    return !modified || datePasses(*modified, now);
}

bool QuickFilterItem::datePasses(const QDateTime &modified, const QDateTime &now) const
{
    const quint32 mode = getDateMode();
    if (mode == DateModeNone)
        return true;
    static constexpr Calendar::Unit units[] = {Calendar::Unit::Day, Calendar::Unit::Week,
                                               Calendar::Unit::Month, Calendar::Unit::Year};
    const quint32 unit = getDateUnits();
    const QDateTime limit =
        unit < 4 ? Calendar::add(modified, getDateValue(), units[unit]) : modified;
    const qint64 remaining = now.msecsTo(limit);
    return mode == DateModeOlderThan ? remaining <= 0 : remaining >= 0;
}

void QuickFilterItem::registerFileTypes(QHash<QString, QList<QuickFilterItem *>> &extensionMap,
                                        const QVariant &menuItem)
{
    for (const PropertyValue &extension : m_tempDictionary.value(kFileExtensions).toArray())
        extensionMap[extension.toString()].append(this);
    m_mainMenuItem = menuItem;
    m_itemList.clear();
    m_hiddenCount = 0;
}
