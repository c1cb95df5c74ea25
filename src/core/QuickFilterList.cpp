#include "QuickFilterList.h"

namespace {
struct DefaultFilter
{
    const char *name;
    quint32 style;
    const char *extensions;
};

// The first-run filters in their order; the lists stay as written.
constexpr DefaultFilter kDefaultFilters[] = {
    {"Images", 2, "jpeg jpg png bmp tif gif psd pspimage thm yuv ai drw eps ps svg"},
    {"Documents", 0,
     "pages numbers rtf txt pdf doc docx wpd wps xls xlsx xlr pps key ppt pptx accdb db dbf mdb "
     "pdb sql"},
    {"Music", 0, "mp3 wav aif iff m3u m4a mpa ra wma"},
    {"Video", 0, "avi mp4 3g2 3gp asf asx flv mov mpg rm swf vob wmv"},
    {"3D Models", 0,
     "3dm max gblend lightwave lw lwo lws obj ge2 ma mb mcfi mcfp mel rtg mll mp skl dwg dxf"},
    {"Applications", 0, "app bat exe jar"},
    {"Web Design", 0, "htm html xml js jsp php rss asp xhtml"},
    {"Packages", 0, "dmg pkg iso vcd toast zip zipx rar gz 7z sit sitx"},
    {"Torrents", 0, "torrent part"},
    {"Xcode", 0, "xcode m h c cpp"},
};
} // namespace

void QuickFilterList::load(PropertyDictionary root)
{
    m_root = root;
    if (!root.value(QuickFiltersKey).isArray()) {
        PropertyArray filters = getQuickFilters();
        for (const DefaultFilter &filter : kDefaultFilters) {
            addDefaultFilter(QString::fromUtf8(filter.name),
                             QString::fromUtf8(filter.extensions).split(u' '), filter.style,
                             filters, -1);
        }
    }
    // Independent of the above: a file that lost the key gains one new
    // "All Contents" at the top, and one that has it never gets a second.
    if (!root.contains(AllContentsKey)) {
        const QString uid = addDefaultFilter(AllContentsName, {}, 0, getQuickFilters(), 0);
        root.insert(AllContentsKey, uid);
    }
    attach(root);
}

void QuickFilterList::attach(const PropertyDictionary &root)
{
    m_root = root;
    m_items.clear();
    for (const PropertyValue &record : root.value(QuickFiltersKey).toArray()) {
        // A record that is not a dictionary still gets an item, so that the
        // list stays index-parallel; edits to it are not saved.
        m_items.append(std::make_shared<QuickFilterItem>(
            record.isDictionary() ? record.toDictionary() : PropertyDictionary()));
    }
}

PropertyArray QuickFilterList::getQuickFilters()
{
    return m_root.arrayForKey(QuickFiltersKey);
}

void QuickFilterList::addQuickFilter(const ItemPointer &item)
{
    getQuickFilters().append(item->dataDictionary());
    m_items.append(item);
}

void QuickFilterList::removeQuickFilter(qsizetype index)
{
    if (index < 0 || index >= m_items.size())
        return;
    m_items.removeAt(index);
    getQuickFilters().removeAt(index);
}

bool QuickFilterList::isDefaultFilter(QuickFilterItem &item) const
{
    const PropertyValue allContents = m_root.value(AllContentsKey);
    return allContents.isString() && allContents.toString() == item.getUid();
}

QString QuickFilterList::addDefaultFilter(const QString &name, const QStringList &extensions,
                                          quint32 style, PropertyArray target, qsizetype index)
{
    QuickFilterItem item;
    item.setName(name);
    item.setStyle(style);
    const QString uid = item.getUid();
    PropertyArray list = item.fileExtensions();
    for (const QString &extension : extensions)
        list.append(extension);
    item.applyChanges();
    if (index < 0)
        target.append(item.dataDictionary());
    else
        target.insert(index, item.dataDictionary());
    return uid;
}
