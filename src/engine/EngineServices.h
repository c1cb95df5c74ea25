#pragma once

class FileViewer;
class ItemInfo;
class ModifierKeys;
class NotificationCenter;
class Scheduler;
class Trash;
class UserNotifier;

// The services the engine works through: real ones in the application, fakes
// and virtual time in tests.
struct EngineServices
{
    Scheduler &scheduler;
    NotificationCenter &notifications;
    ItemInfo &itemInfo;
    Trash &trash;
    UserNotifier &notifier;
    FileViewer &fileViewer;
    ModifierKeys &modifierKeys;
};
