#pragma once

// The desktop's own settings for notifications, where the desktop has them.
class NotificationSettings
{
public:
    virtual ~NotificationSettings() = default;
    // Whether there is a settings program to open.
    virtual bool isAvailable() const = 0;
    // Opens it; false when it could not be started.
    virtual bool open() = 0;
};
