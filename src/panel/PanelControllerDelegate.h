#pragma once

#include <QRect>

class PanelController;

// What the panel needs from the application: where the status item is, and
// the application-wide actions its action menu offers.
class PanelControllerDelegate
{
public:
    virtual ~PanelControllerDelegate() = default;

    // The status item in global coordinates (the point of the click where the
    // tray host does not tell where its icon is).
    virtual QRect statusItemRectForPanelController(PanelController &panel) = 0;

    virtual void doTidy() = 0;
    virtual void restoreFiles() = 0;
    virtual void restoreAllFiles() = 0;
    virtual void emptyShadowDesktop() = 0;
    virtual void emailSupport() = 0;
    virtual void reviewApp() = 0;
    virtual void openSupport() = 0;
    virtual void openHelp() = 0;
    virtual void openAboutWindow() = 0;
    virtual void checkForUpdates() = 0;
    virtual void terminate() = 0;
    // Windows that not every build has; their entries show only when they exist.
    virtual bool canOpenTutorial() const = 0;
    virtual void openTutorial() = 0;
    virtual bool canOpenPreferences() const = 0;
};
