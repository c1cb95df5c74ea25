#pragma once

#include <QDateTime>

// What the store's status display needs to know of the tidy engine.
class TidyStatusSource
{
public:
    virtual ~TidyStatusSource() = default;
    virtual bool getEnabled() const = 0;
    // When the next automatic tidy can begin.
    virtual QDateTime getEarliestTidyDate() const = 0;
};
