#include "PropertyValue.h"

#include <QStringList>

#include <cmath>

// ---- PropertyArray ----

PropertyArray::PropertyArray() : m_items(std::make_shared<std::vector<PropertyValue>>()) {}

qsizetype PropertyArray::size() const
{
    return qsizetype(m_items->size());
}

const PropertyValue &PropertyArray::at(qsizetype index) const
{
    return m_items->at(size_t(index));
}

void PropertyArray::append(const PropertyValue &value)
{
    m_items->push_back(value);
}

void PropertyArray::insert(qsizetype index, const PropertyValue &value)
{
    m_items->insert(m_items->begin() + std::clamp<qsizetype>(index, 0, size()), value);
}

void PropertyArray::replace(qsizetype index, const PropertyValue &value)
{
    m_items->at(size_t(index)) = value;
}

void PropertyArray::removeAt(qsizetype index)
{
    if (index >= 0 && index < size())
        m_items->erase(m_items->begin() + index);
}

void PropertyArray::clear()
{
    m_items->clear();
}

PropertyArray PropertyArray::shallowCopy() const
{
    PropertyArray copy;
    *copy.m_items = *m_items;
    return copy;
}

PropertyArray PropertyArray::deepCopy() const
{
    PropertyArray copy;
    copy.m_items->reserve(m_items->size());
    for (const PropertyValue &value : *m_items)
        copy.m_items->push_back(value.deepCopy());
    return copy;
}

bool PropertyArray::operator==(const PropertyArray &other) const
{
    return m_items == other.m_items || *m_items == *other.m_items;
}

// ---- PropertyDictionary ----

PropertyDictionary::PropertyDictionary() : m_map(std::make_shared<Map>()) {}

qsizetype PropertyDictionary::size() const
{
    return qsizetype(m_map->size());
}

bool PropertyDictionary::contains(const QString &key) const
{
    return m_map->count(key) > 0;
}

PropertyValue PropertyDictionary::value(const QString &key) const
{
    const auto found = m_map->find(key);
    return found == m_map->end() ? PropertyValue() : found->second;
}

void PropertyDictionary::insert(const QString &key, const PropertyValue &value)
{
    (*m_map)[key] = value;
}

template <typename Container>
static Container containerForKey(PropertyDictionary &dictionary, const QString &key)
{
    const PropertyValue stored = dictionary.value(key);
    if constexpr (std::is_same_v<Container, PropertyArray>) {
        if (stored.isArray())
            return stored.toArray();
    } else {
        if (stored.isDictionary())
            return stored.toDictionary();
    }
    Container created;
    dictionary.insert(key, created);
    return created;
}

PropertyArray PropertyDictionary::arrayForKey(const QString &key)
{
    return containerForKey<PropertyArray>(*this, key);
}

PropertyDictionary PropertyDictionary::dictionaryForKey(const QString &key)
{
    return containerForKey<PropertyDictionary>(*this, key);
}

void PropertyDictionary::remove(const QString &key)
{
    m_map->erase(key);
}

void PropertyDictionary::clear()
{
    m_map->clear();
}

QStringList PropertyDictionary::keys() const
{
    QStringList keys;
    keys.reserve(size());
    for (const auto &entry : *m_map)
        keys.append(entry.first);
    return keys;
}

PropertyDictionary PropertyDictionary::shallowCopy() const
{
    PropertyDictionary copy;
    *copy.m_map = *m_map;
    return copy;
}

PropertyDictionary PropertyDictionary::deepCopy() const
{
    PropertyDictionary copy;
    for (const auto &[key, value] : *m_map)
        copy.m_map->emplace(key, value.deepCopy());
    return copy;
}

bool PropertyDictionary::operator==(const PropertyDictionary &other) const
{
    return m_map == other.m_map || *m_map == *other.m_map;
}

// ---- PropertyValue ----

PropertyValue::Type PropertyValue::type() const
{
    static constexpr Type types[] = {Type::Null,  Type::String,     Type::Integer, Type::Integer,
                                     Type::Real,  Type::Boolean,    Type::Date,    Type::Data,
                                     Type::Array, Type::Dictionary, Type::Unknown};
    return types[m_value.index()];
}

template <typename T> static T valueOr(const auto &variant, T fallback)
{
    const T *stored = std::get_if<T>(&variant);
    return stored ? *stored : fallback;
}

QString PropertyValue::toString() const
{
    return valueOr(m_value, QString());
}
QDateTime PropertyValue::toDate() const
{
    return valueOr(m_value, QDateTime());
}
QByteArray PropertyValue::toData() const
{
    return valueOr(m_value, QByteArray());
}
double PropertyValue::toReal() const
{
    return valueOr(m_value, 0.0);
}
UnknownElement PropertyValue::toUnknown() const
{
    return valueOr(m_value, UnknownElement());
}

PropertyArray PropertyValue::toArray() const
{
    const auto *array = std::get_if<PropertyArray>(&m_value);
    return array ? *array : PropertyArray();
}

PropertyDictionary PropertyValue::toDictionary() const
{
    const auto *dictionary = std::get_if<PropertyDictionary>(&m_value);
    return dictionary ? *dictionary : PropertyDictionary();
}

qint64 PropertyValue::toInt64() const
{
    if (const auto *unsignedValue = std::get_if<quint64>(&m_value))
        return qint64(*unsignedValue);
    return valueOr(m_value, qint64(0));
}

quint64 PropertyValue::toUInt64() const
{
    if (const auto *signedValue = std::get_if<qint64>(&m_value))
        return quint64(*signedValue);
    return valueOr(m_value, quint64(0));
}

// The leading number of a string, as a string's integer value is read: leading
// blanks, an optional sign, then decimal digits; anything else ends it.
static std::int64_t leadingInteger(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == u'-' || text.at(i) == u'+'))
        negative = text.at(i++) == u'-';
    std::uint64_t magnitude = 0;
    for (; i < text.size() && text.at(i) >= u'0' && text.at(i) <= u'9'; ++i) {
        const std::uint64_t digit = std::uint64_t(text.at(i).unicode() - u'0');
        if (magnitude > (std::uint64_t(INT64_MAX) - digit) / 10)
            return negative ? INT64_MIN : INT64_MAX;
        magnitude = magnitude * 10 + digit;
    }
    return negative ? -std::int64_t(magnitude) : std::int64_t(magnitude);
}

// A string is true when, after leading blanks and zeros and an optional sign, it
// starts with Y, y, T, t or a digit 1 to 9.
static bool stringIsTrue(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    if (i < text.size() && (text.at(i) == u'-' || text.at(i) == u'+'))
        ++i;
    while (i < text.size() && text.at(i) == u'0')
        ++i;
    if (i == text.size())
        return false;
    const QChar c = text.at(i);
    return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
}

bool PropertyValue::boolValue(bool fallback) const
{
    switch (m_value.index()) {
    case 1:
        return stringIsTrue(std::get<QString>(m_value));
    case 2:
        return std::get<qint64>(m_value) != 0;
    case 3:
        return std::get<quint64>(m_value) != 0;
    case 4:
        return std::get<double>(m_value) != 0.0;
    case 5:
        return std::get<bool>(m_value);
    default:
        return fallback;
    }
}

std::int64_t PropertyValue::integerValue(std::int64_t fallback) const
{
    switch (m_value.index()) {
    case 1:
        return leadingInteger(std::get<QString>(m_value));
    case 2:
        return std::get<qint64>(m_value);
    case 3:
        return std::int64_t(std::get<quint64>(m_value));
    case 4: {
        const double real = std::get<double>(m_value);
        if (std::isnan(real))
            return 0;
        if (real >= 9.2233720368547758e18)
            return INT64_MAX;
        if (real <= -9.2233720368547758e18)
            return INT64_MIN;
        return std::int64_t(real);
    }
    case 5:
        return std::get<bool>(m_value) ? 1 : 0;
    default:
        return fallback;
    }
}

bool PropertyValue::operator==(const PropertyValue &other) const
{
    if (isInteger() && other.isInteger()) {
        // Same bits and same side of zero: -1 and 2^64-1 differ.
        const bool negative = !isUnsignedInteger() && toInt64() < 0;
        const bool otherNegative = !other.isUnsignedInteger() && other.toInt64() < 0;
        return negative == otherNegative && toUInt64() == other.toUInt64();
    }
    if (type() == Type::Real && other.type() == Type::Real) {
        const double a = toReal(), b = other.toReal();
        return a == b || (std::isnan(a) && std::isnan(b));
    }
    return m_value == other.m_value;
}

PropertyValue PropertyValue::deepCopy() const
{
    if (const auto *array = std::get_if<PropertyArray>(&m_value))
        return array->deepCopy();
    if (const auto *dictionary = std::get_if<PropertyDictionary>(&m_value))
        return dictionary->deepCopy();
    return *this;
}
