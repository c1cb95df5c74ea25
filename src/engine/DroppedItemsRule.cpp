#include "DroppedItemsRule.h"

#include "FileNames.h"

#include <QDir>

#include <algorithm>

namespace {

// The names of one place: as written, cleaned, and where it exists with its
// links resolved (all but the last step for an item that moves as it is).
QStringList namesOf(const QString &path, bool resolveLast)
{
    const QString clean = QDir::cleanPath(path);
    QString real;
    if (resolveLast) {
        real = FileNames::canonical(clean);
    } else if (const qsizetype slash = clean.lastIndexOf(u'/'); slash > 0) {
        if (const QString folder = FileNames::canonical(clean.left(slash)); !folder.isNull())
            real = (folder == u"/" ? QString() : folder) + clean.sliced(slash);
    }
    if (real.isEmpty() || real == clean)
        return {clean};
    return {clean, real};
}

// Whether any name of inner is outer or lies in it, by any name of outer.
bool within(const QStringList &inner, const QStringList &outer)
{
    return std::any_of(inner.begin(), inner.end(), [&outer](const QString &in) {
        return std::any_of(outer.begin(), outer.end(), [&in](const QString &out) {
            return in == out || out == u"/" || in.startsWith(out + u'/');
        });
    });
}

} // namespace

bool DroppedItemsRule::allows(const QStringList &items, const QString &folder,
                              const KeptFolders &kept)
{
    const QStringList target = namesOf(folder, true);
    const QStringList shadowDesktop = namesOf(kept.shadowDesktop, true);
    const QStringList brevanoData = namesOf(kept.brevanoData, true);
    const QList<QStringList> keptFolders{namesOf(kept.desktop, true), namesOf(kept.home, true),
                                         shadowDesktop, brevanoData};
    return std::none_of(items.begin(), items.end(), [&](const QString &item) {
        const QStringList names = namesOf(item, false);
        return within(target, names) ||
               std::any_of(keptFolders.begin(), keptFolders.end(),
                           [&names](const QStringList &place) { return within(place, names); }) ||
               (within(names, brevanoData) && !within(names, shadowDesktop));
    });
}
