#include "DraggedBackFiles.h"

#include <QSet>

namespace {
QStringView lastComponent(const QString &path)
{
    return QStringView(path).sliced(path.lastIndexOf(u'/') + 1);
}
} // namespace

QStringList DraggedBackFiles::find(const QStringList &draggedPaths, qsizetype desktopCountBefore,
                                   const QStringList &desktopEntries)
{
    if (desktopEntries.size() <= desktopCountBefore)
        return {};
    QSet<QStringView> names;
    for (const QString &path : draggedPaths)
        names.insert(lastComponent(path));
    QStringList found;
    for (const QString &entry : desktopEntries)
        if (names.contains(lastComponent(entry)))
            found.append(entry);
    return found;
}

Alert DraggedBackFiles::question(qsizetype count)
{
    // Both say "these files", as the one-file text always has.
    return Alert{count == 1
                     ? QStringLiteral("It looks like you just dragged a file back to the Desktop. "
                                      "Would you like Brevano to ignore these files when tidying?")
                     : QStringLiteral("It looks like you just dragged files back to the Desktop. "
                                      "Would you like Brevano to ignore these files when tidying?"),
                 QString(),
                 {QStringLiteral("Yes"), QStringLiteral("No")}};
}
