#pragma once

#include <QString>

// The user's Trash. An item that cannot be trashed stays where it is: never a
// copy left behind, never a deletion.
class Trash
{
public:
    struct Result
    {
        bool ok = false;
        QString trashedPath; // where the item now lies
        QString message;     // why not, when !ok
    };

    virtual ~Trash() = default;
    Result trash(const QString &path) { return trashAs(path, path); }
    // Trashes the item at path as the item at originalPath (in the same
    // folder): the name it has in the Trash and where it is restored to.
    virtual Result trashAs(const QString &path, const QString &originalPath) = 0;
};
