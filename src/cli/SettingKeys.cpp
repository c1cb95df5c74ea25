#include "SettingKeys.h"

#include "AppFolders.h"
#include "Brevano.h"
#include "BrevanoData.h"
#include "PropertyListWriter.h"

#include <QDir>
#include <QFileInfo>

namespace {

using Key = SettingKeys::Key;
using Type = SettingKeys::Type;
// A key read and written through one of the store's typed getters and setters.
template <typename T>
Key storeKey(const char *name, T (BrevanoData::*get)() const, void (BrevanoData::*set)(T))
{
    constexpr bool isBool = std::is_same_v<T, bool>;
    return {QString::fromUtf8(name), isBool ? Type::Boolean : Type::Unsigned,
            [get](BrevanoData &data, Brevano &) {
                if constexpr (isBool)
                    return PropertyValue((data.*get)());
                else
                    return PropertyValue(qint64((data.*get)()));
            },
            [set](BrevanoData &data, Brevano &, const PropertyValue &value) {
                if constexpr (isBool)
                    (data.*set)(value.boolValue(false));
                else
                    (data.*set)(quint32(value.toUInt64()));
            }};
}

Key structureKey(const QString &name)
{
    return {name,
            Type::Structure,
            [name](BrevanoData &data, Brevano &) { return data.saveData().value(name); },
            {}};
}

std::vector<Key> makeKeys()
{
    return {
        structureKey(QuickFilterList::QuickFiltersKey),
        {QuickFilterList::AllContentsKey,
         Type::String,
         [](BrevanoData &data, Brevano &) {
             return PropertyValue(
                 data.saveData().value(QuickFilterList::AllContentsKey).toString());
         },
         {}},
        structureKey(IgnoreList::Key),
        structureKey(Brevano::SaveDataKey),
        storeKey("Tab", &BrevanoData::getCurrentPreferencesTab,
                 &BrevanoData::setCurrentPreferencesTab),
        storeKey("ShowWelcome2.0", &BrevanoData::getShowWelcome, &BrevanoData::setShowWelcome),
        storeKey("GrowlEnabled", &BrevanoData::getGrowlEnabled, &BrevanoData::setGrowlEnabled),
        storeKey("GrowlBeforeTidy", &BrevanoData::getGrowlBeforeTidy,
                 &BrevanoData::setGrowlBeforeTidy),
        storeKey("GrowlBeforeTidyOnlyIfFiles", &BrevanoData::getGrowlBeforeTidyOnlyIfFiles,
                 &BrevanoData::setGrowlBeforeTidyOnlyIfFiles),
        storeKey("GrowlOnComplete", &BrevanoData::getGrowlOnComplete,
                 &BrevanoData::setGrowlOnComplete),
        storeKey("GrowlOnEmpty", &BrevanoData::getGrowlOnEmpty, &BrevanoData::setGrowlOnEmpty),
        storeKey("GrowlDeferredStart", &BrevanoData::getGrowlDeferredTidy,
                 &BrevanoData::setGrowlDeferredTidy),
        storeKey("GrowlFileMoved", &BrevanoData::getGrowlFileMoved,
                 &BrevanoData::setGrowlFileMoved),
        storeKey("GrowlFileMoveFailed", &BrevanoData::getGrowlFileMoveFailed,
                 &BrevanoData::setGrowlFileMoveFailed),
        storeKey("OperationMode", &BrevanoData::getOperationMode, &BrevanoData::setOperationMode),
        storeKey("OverwriteMode", &BrevanoData::getOverwriteMode, &BrevanoData::setOverwriteMode),
        storeKey("QuickFiltersMode", &BrevanoData::getQuickFiltersMode,
                 &BrevanoData::setQuickFiltersMode),
        storeKey("TidyFrequency", &BrevanoData::getTidyFrequency, &BrevanoData::setTidyFrequency),
        {QStringLiteral("LastTidy"), Type::Date,
         [](BrevanoData &data, Brevano &) { return PropertyValue(data.getLastTidyTime()); },
         [](BrevanoData &data, Brevano &, const PropertyValue &value) {
             data.setLastTidyTime(value.toDate());
         }},
        {QStringLiteral("ShadowDesktopPath"), Type::FolderPath,
         [](BrevanoData &data, Brevano &) { return PropertyValue(data.getShadowDesktopPath()); },
         [](BrevanoData &data, Brevano &, const PropertyValue &value) {
             // An empty path goes back to the default folder.
             data.setShadowDesktopPath(value.toString().isEmpty() ? QString() : value.toString());
         }},
        storeKey("IgnoreHidden", &BrevanoData::getIgnoreHidden, &BrevanoData::setIgnoreHidden),
        storeKey("IgnoreAliases", &BrevanoData::getIgnoreAliases, &BrevanoData::setIgnoreAliases),
        storeKey("IgnoreFolders", &BrevanoData::getIgnoreFolders, &BrevanoData::setIgnoreFolders),
        storeKey("AutoIgnoreRestoredFiles", &BrevanoData::getAutoIgnoreRestoredFiles,
                 &BrevanoData::setAutoIgnoreRestoredFiles),
        storeKey("ShowTimeUntilTidy", &BrevanoData::getShowTimeUntilTidy,
                 &BrevanoData::setShowTimeUntilTidy),
        storeKey("PinPanel", &BrevanoData::getPin, &BrevanoData::setPin),
        storeKey("ModifiedDateFilter", &BrevanoData::getDateFilter, &BrevanoData::setDateFilter),
        storeKey("VerboseOutput", &BrevanoData::getVerboseOutput, &BrevanoData::setVerboseOutput),
        {QStringLiteral("Enabled"), Type::Boolean,
         [](BrevanoData &, Brevano &engine) { return PropertyValue(engine.getEnabled()); },
         [](BrevanoData &, Brevano &engine, const PropertyValue &value) {
             engine.setEnabled(value.boolValue(false));
         }},
    };
}

std::optional<bool> parseBoolean(const QString &text)
{
    const QString lower = text.trimmed().toLower();
    if (lower == u"true" || lower == u"yes" || lower == u"1")
        return true;
    if (lower == u"false" || lower == u"no" || lower == u"0")
        return false;
    return std::nullopt;
}

// Folders inside the Desktop would themselves be tidied, and relative paths
// would follow the working directory.
std::optional<QString> checkedFolder(const QString &text, QString &error)
{
    if (text.isEmpty())
        return QString();
    if (!QDir::isAbsolutePath(text)) {
        error = QStringLiteral("an absolute folder path");
        return std::nullopt;
    }
    const QString path = QDir::cleanPath(text);
    if (!QFileInfo(path).isDir()) {
        error = QStringLiteral("an existing folder (nothing is created)");
        return std::nullopt;
    }
    error = AppFolders::shadowDesktopRequirement(path);
    if (!error.isEmpty())
        return std::nullopt;
    return path;
}

} // namespace

const std::vector<SettingKeys::Key> &SettingKeys::all()
{
    static const std::vector<Key> keys = makeKeys();
    return keys;
}

const SettingKeys::Key *SettingKeys::find(const QString &name)
{
    for (const Key &key : all()) {
        if (key.name == name)
            return &key;
    }
    return nullptr;
}

QString SettingKeys::typeName(Type type)
{
    switch (type) {
    case Type::Boolean:
        return QStringLiteral("a boolean (true or false)");
    case Type::Unsigned:
        return QStringLiteral("an unsigned integer (0 to 4294967295)");
    case Type::Date:
        return QStringLiteral("a date (ISO 8601, such as 2026-11-21T09:30:00Z)");
    case Type::String:
        return QStringLiteral("a string");
    case Type::FolderPath:
        return QStringLiteral("a folder path (absolute; empty for the default)");
    case Type::Structure:
        return QStringLiteral("a property list (read only)");
    }
    return QString();
}

QString SettingKeys::format(const Key &key, const PropertyValue &value)
{
    switch (key.type) {
    case Type::Boolean:
        return value.boolValue(false) ? QStringLiteral("true") : QStringLiteral("false");
    case Type::Unsigned:
        return QString::number(value.toUInt64());
    case Type::Date:
        return value.toDate().toUTC().toString(u"yyyy-MM-ddTHH:mm:ssZ");
    case Type::String:
    case Type::FolderPath:
        return value.toString();
    case Type::Structure:
        return QString::fromUtf8(PropertyListWriter::write(value).value_or(QByteArray())).trimmed();
    }
    return QString();
}

std::optional<PropertyValue> SettingKeys::parse(const Key &key, const QString &text, QString &error)
{
    error = typeName(key.type);
    switch (key.type) {
    case Type::Boolean:
        if (const auto value = parseBoolean(text))
            return PropertyValue(*value);
        return std::nullopt;
    case Type::Unsigned: {
        bool ok = false;
        const qulonglong value = text.trimmed().toULongLong(&ok);
        if (!ok || value > 0xFFFFFFFFull || text.trimmed().startsWith(u'+'))
            return std::nullopt;
        return PropertyValue(qint64(value));
    }
    case Type::Date: {
        const QDateTime date = QDateTime::fromString(text.trimmed(), Qt::ISODate);
        if (!date.isValid())
            return std::nullopt;
        return PropertyValue(date);
    }
    case Type::String:
        return PropertyValue(text);
    case Type::FolderPath:
        if (const auto folder = checkedFolder(text, error))
            return PropertyValue(*folder);
        return std::nullopt;
    case Type::Structure:
        return std::nullopt;
    }
    return std::nullopt;
}
