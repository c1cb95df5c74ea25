#pragma once

#include "PropertyValue.h"

#include <QHash>
#include <QList>
#include <QVariant>
#include <QVariantMap>

// A named set of file extensions with an optional modification-date condition,
// and the view options the panel shows it with. Edits go to a working copy
// (tempDictionary) until applyChanges() commits them to the record.
class QuickFilterItem
{
public:
    enum DateMode : quint32
    {
        DateModeNone = 0,
        DateModeWithin = 1,
        DateModeOlderThan = 2
    };
    enum DateUnit : quint32
    {
        DateUnitDays = 0,
        DateUnitWeeks,
        DateUnitMonths,
        DateUnitYears
    };

    // A filter over record (shared, not copied); without one, a new filter
    // (createdItem) with an empty record.
    explicit QuickFilterItem(const std::optional<PropertyDictionary> &record = std::nullopt);
    // A copy is a new item over the same record.
    QuickFilterItem(const QuickFilterItem &other) : QuickFilterItem(other.m_dataDictionary) {}
    QuickFilterItem &operator=(const QuickFilterItem &other);
    QuickFilterItem(QuickFilterItem &&) = default;
    QuickFilterItem &operator=(QuickFilterItem &&) = default;

    static QString createUid();

    PropertyDictionary dataDictionary() const { return m_dataDictionary; }
    PropertyDictionary tempDictionary() const { return m_tempDictionary; }
    bool createdItem() const { return m_createdItem; }
    void setCreatedItem(bool created) { m_createdItem = created; }

    QString getName() const;           // a null string when the record has none
    void setName(const QString &name); // a null string removes the name
    quint32 getStyle() const { return uintValue(QStringLiteral("Style"), 0); }
    void setStyle(quint32 style) { setUInt(QStringLiteral("Style"), style); }
    quint32 getIconSize() const { return uintValue(QStringLiteral("IconSize"), 0); }
    void setIconSize(quint32 size) { setUInt(QStringLiteral("IconSize"), size); }
    quint32 getIconStyle() const { return uintValue(QStringLiteral("IconStyle"), 0); }
    void setIconStyle(quint32 style) { setUInt(QStringLiteral("IconStyle"), style); }
    quint32 getFolderStyle() const { return uintValue(QStringLiteral("FolderStyle"), 0); }
    void setFolderStyle(quint32 style) { setUInt(QStringLiteral("FolderStyle"), style); }
    quint32 getDateMode() const { return uintValue(QStringLiteral("DateMode"), 0); }
    void setDateMode(quint32 mode) { setUInt(QStringLiteral("DateMode"), mode); }
    quint32 getDateUnits() const { return uintValue(QStringLiteral("DateUnits"), 0); }
    void setDateUnits(quint32 units) { setUInt(QStringLiteral("DateUnits"), units); }
    qint64 getDateValue() const;
    void setDateValue(qint64 value);

    // The working copy's extension list, created empty when absent. It is the
    // record's own list until an edit replaces it, so discardChanges() does not
    // undo changes made to it.
    PropertyArray fileExtensions();
    // The UID, made and stored in both dictionaries when absent or empty.
    QString getUid();

    void applyChanges();
    void discardChanges();

    // Lower-cased extensions joined by ",", as the editor lists them.
    QString getExtensionsText() const;

    // Extension matching is case-sensitive: photo.JPG does not match "jpg".
    bool filePassesFilter(const QString &path, const QDateTime &now) const;
    bool filePassesDateFilter(const QString &path, const QDateTime &now) const;
    // The date test on a known modification date.
    bool datePasses(const QDateTime &modified, const QDateTime &now) const;

    // Prepares a status-menu build: registers this filter under each of its
    // extensions and resets the build state.
    void registerFileTypes(QHash<QString, QList<QuickFilterItem *>> &extensionMap,
                           const QVariant &menuItem);
    void addItem(const QVariantMap &entry) { m_itemList.append(entry); }
    void incrementHiddenCount() { ++m_hiddenCount; }

    QVariant mainMenuItem() const { return m_mainMenuItem; }
    QList<QVariantMap> itemList() const { return m_itemList; }
    quint64 hiddenCount() const { return m_hiddenCount; }
    bool wasLastHidden() const { return m_wasLastHidden; }
    void setWasLastHidden(bool hidden) { m_wasLastHidden = hidden; }

private:
    quint32 uintValue(const QString &key, quint32 fallback) const;
    void setUInt(const QString &key, quint32 value);

    PropertyDictionary m_dataDictionary;
    PropertyDictionary m_tempDictionary;
    bool m_createdItem = false;

    // Status-menu build state; never saved.
    QVariant m_mainMenuItem;
    QList<QVariantMap> m_itemList;
    quint64 m_hiddenCount = 0;
    bool m_wasLastHidden = true;
};
