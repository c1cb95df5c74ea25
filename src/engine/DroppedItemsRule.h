#pragma once

#include <QStringList>

// Which items dropped on the panel may move into a folder of the Shadow
// Desktop. None goes into itself or a folder inside it. None may be the
// Desktop, the home folder, the Shadow Desktop or Brevano's data, or hold any
// of them: moving it would take those along. Nothing of Brevano's data moves
// but what lies in the Shadow Desktop. Paths count as written (cleaned) and,
// where they exist, with their links resolved; a dropped link is the link
// itself, and moves as one.
class DroppedItemsRule
{
public:
    struct KeptFolders
    {
        QString desktop;
        QString home;
        QString shadowDesktop;
        QString brevanoData;
    };

    static bool allows(const QStringList &items, const QString &folder, const KeptFolders &kept);
};
