#pragma once

#include "QuickFilterItem.h"

#include <memory>

// The live, ordered quick filters, kept index-parallel with the "QuickFilters"
// array of the store's root dictionary.
class QuickFilterList
{
public:
    using ItemPointer = std::shared_ptr<QuickFilterItem>;

    static inline const QString QuickFiltersKey = QStringLiteral("QuickFilters");
    static inline const QString AllContentsKey = QStringLiteral("QuickFilterAllContents");
    static inline const QString AllContentsName = QStringLiteral("All Contents");

    // Fills in the defaults a first run needs and makes an item for every record.
    void load(PropertyDictionary root);
    // Makes an item for every record of root, adding nothing.
    void attach(const PropertyDictionary &root);

    // The root's "QuickFilters" array, created empty when absent.
    PropertyArray getQuickFilters();
    const QList<ItemPointer> &filterItems() const { return m_items; }
    void setFilterItems(const QList<ItemPointer> &items) { m_items = items; }

    void addQuickFilter(const ItemPointer &item);
    // Out-of-range indexes do nothing; "All Contents" is not protected here.
    void removeQuickFilter(qsizetype index);
    bool isDefaultFilter(QuickFilterItem &item) const;

    // Makes a filter record, appends it to target (index < 0) or inserts it at
    // index, and returns its UID.
    static QString addDefaultFilter(const QString &name, const QStringList &extensions,
                                    quint32 style, PropertyArray target, qsizetype index);

private:
    PropertyDictionary m_root;
    QList<ItemPointer> m_items;
};
