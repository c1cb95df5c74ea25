#include "DirectoryListing.h"

#include <QDirIterator>

QStringList DirectoryListing::entries(const QString &folder)
{
    QStringList paths;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (it.hasNext())
        paths.append(it.next());
    return paths;
}
