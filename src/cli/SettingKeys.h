#pragma once

#include "PropertyValue.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

class BrevanoData;
class Brevano;

// Every key the command line can read and write: the store's root keys and the
// engine's "Enabled", each with its type and its getter and setter.
class SettingKeys
{
public:
    enum class Type
    {
        Boolean,
        Unsigned,
        Date,
        String,
        FolderPath,
        Structure
    };

    struct Key
    {
        QString name;
        Type type;
        std::function<PropertyValue(BrevanoData &, Brevano &)> get;
        // Empty for keys that are not set from the command line.
        std::function<void(BrevanoData &, Brevano &, const PropertyValue &)> set;
    };

    static const std::vector<Key> &all();
    static const Key *find(const QString &name);

    static QString typeName(Type type);
    // The value as printed by "get": true/false, decimal, ISO 8601 UTC, text,
    // or a property list for lists and dictionaries.
    static QString format(const Key &key, const PropertyValue &value);
    // The typed value of text, or nothing with error telling what was expected.
    static std::optional<PropertyValue> parse(const Key &key, const QString &text, QString &error);
};
