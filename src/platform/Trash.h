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
    virtual Result trash(const QString &path) = 0;
};
