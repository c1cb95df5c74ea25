#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <variant>
#include <vector>

class PropertyValue;
class PropertyDictionary;

// An ordered list of values with reference semantics: copies of a PropertyArray
// are the same list, so a change through one is seen through every other.
class PropertyArray
{
public:
    PropertyArray();

    qsizetype size() const;
    bool isEmpty() const { return size() == 0; }
    const PropertyValue &at(qsizetype index) const;
    void append(const PropertyValue &value);
    void insert(qsizetype index, const PropertyValue &value);
    void replace(qsizetype index, const PropertyValue &value);
    void removeAt(qsizetype index);
    void clear();

    // A new list holding the same values; nested containers stay shared.
    PropertyArray shallowCopy() const;
    // A new list in which every nested container is new as well.
    PropertyArray deepCopy() const;

    bool isSameObject(const PropertyArray &other) const
    {
        return m_items.get() == other.m_items.get();
    }
    bool operator==(const PropertyArray &other) const;

    auto begin() const;
    auto end() const;

private:
    std::shared_ptr<std::vector<PropertyValue>> m_items;
};

// A string-keyed map with reference semantics, like PropertyArray. Keys are kept
// in code-unit order so that the written file is stable.
class PropertyDictionary
{
public:
    using Map = std::map<QString, PropertyValue>;

    PropertyDictionary();

    qsizetype size() const;
    bool isEmpty() const { return size() == 0; }
    bool contains(const QString &key) const;
    // The value under key, or a null value when absent.
    PropertyValue value(const QString &key) const;
    void insert(const QString &key, const PropertyValue &value);
    // The array or dictionary under key; an empty one is stored first when the
    // key is absent or holds another type.
    PropertyArray arrayForKey(const QString &key);
    PropertyDictionary dictionaryForKey(const QString &key);
    void remove(const QString &key);
    void clear();
    QStringList keys() const;

    PropertyDictionary shallowCopy() const;
    PropertyDictionary deepCopy() const;

    bool isSameObject(const PropertyDictionary &other) const
    {
        return m_map.get() == other.m_map.get();
    }
    bool operator==(const PropertyDictionary &other) const;

    auto begin() const;
    auto end() const;

private:
    std::shared_ptr<Map> m_map;
};

// An element this program does not model, kept as its XML text so that it is
// written back unchanged.
struct UnknownElement
{
    QString xml;
    bool operator==(const UnknownElement &) const = default;
};

// One node of the store tree: a scalar, or a shared array or dictionary.
class PropertyValue
{
public:
    enum class Type
    {
        Null,
        String,
        Integer,
        Real,
        Boolean,
        Date,
        Data,
        Array,
        Dictionary,
        Unknown
    };

    PropertyValue() = default;
    PropertyValue(const QString &string) : m_value(string) {}
    PropertyValue(const char *string) : m_value(QString::fromUtf8(string)) {}
    PropertyValue(bool boolean) : m_value(boolean) {}
    PropertyValue(int integer) : m_value(qint64(integer)) {}
    PropertyValue(qint64 integer) : m_value(integer) {}
    PropertyValue(quint64 integer) : m_value(integer) {}
    PropertyValue(double real) : m_value(real) {}
    PropertyValue(const QDateTime &date) : m_value(date.toUTC()) {}
    PropertyValue(const QByteArray &data) : m_value(data) {}
    PropertyValue(const PropertyArray &array) : m_value(array) {}
    PropertyValue(const PropertyDictionary &dictionary) : m_value(dictionary) {}
    PropertyValue(const UnknownElement &unknown) : m_value(unknown) {}

    Type type() const;
    bool isNull() const { return type() == Type::Null; }
    bool isString() const { return type() == Type::String; }
    bool isInteger() const { return type() == Type::Integer; }
    bool isArray() const { return type() == Type::Array; }
    bool isDictionary() const { return type() == Type::Dictionary; }
    // True for an integer above the signed 64-bit range.
    bool isUnsignedInteger() const { return std::holds_alternative<quint64>(m_value); }

    // Exact accessors: the stored object when it has this type, else a default.
    QString toString() const;
    QDateTime toDate() const;
    QByteArray toData() const;
    double toReal() const;
    PropertyArray toArray() const;
    PropertyDictionary toDictionary() const;
    UnknownElement toUnknown() const;
    qint64 toInt64() const;
    quint64 toUInt64() const;

    // Conversions of the store's getters, lenient about the stored type:
    // numbers, booleans and numeric strings all answer.
    bool boolValue(bool fallback) const;
    std::int64_t integerValue(std::int64_t fallback) const;

    // Integers compare by value whatever their signedness; containers by content.
    bool operator==(const PropertyValue &other) const;

    PropertyValue deepCopy() const;

private:
    std::variant<std::monostate, QString, qint64, quint64, double, bool, QDateTime, QByteArray,
                 PropertyArray, PropertyDictionary, UnknownElement>
        m_value;
};

// Defined here, where PropertyValue is complete.
inline auto PropertyArray::begin() const
{
    return m_items->cbegin();
}
inline auto PropertyArray::end() const
{
    return m_items->cend();
}
inline auto PropertyDictionary::begin() const
{
    return m_map->cbegin();
}
inline auto PropertyDictionary::end() const
{
    return m_map->cend();
}
