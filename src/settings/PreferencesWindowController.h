#pragma once

#include "SettingsServices.h"
#include "SingleInstance.h"

#include <QDialog>
#include <QSet>

#include <memory>

namespace Ui {
class Preferences;
}
class IgnoreDesktopItemsObjectController;

// The Preferences window. It shows the settings when it is made and writes them
// all back on Done; the overwrite choice, the mode, the Shadow Desktop folder and
// starting at login take effect at once. One at a time: closed with the title
// bar's control or Escape it is only hidden, with the controls as the user left
// them, and the next opening shows it again. Done closes it for good.
class PreferencesWindowController : public QDialog,
                                    public SingleInstance<PreferencesWindowController>
{
    Q_OBJECT
public:
    explicit PreferencesWindowController(const SettingsServices &services,
                                         QWidget *parent = nullptr);
    ~PreferencesWindowController() override;

    // isOpen(): an instance exists that Done has not closed (it may be hidden);
    // bringToFront() shows it again in front of other windows; openInstance().

    Ui::Preferences &ui() const { return *m_ui; }

    void overwriteOptionChanged(int mode);
    void pressedModeBasic() { setOperationMode(0); }
    void pressedModeAdvanced() { setOperationMode(1); }
    // The current mode's button is the one that cannot be pressed.
    void updateButtons();
    void pressedChangePath();
    void pressedResetPath();
    void pressedOpenGrowlPreferences();
    void launchAtLoginChanged(bool enabled);
    void pressedDone();

protected:
    void showEvent(QShowEvent *event) override;

private:
    struct CheckBoxSetting;
    // In the order Done writes them.
    QList<CheckBoxSetting> checkBoxSettings() const;
    void embedViews();
    void loadSettings();
    // What lives outside the store and may have changed while the window was hidden.
    void showDesktopState();
    void setOperationMode(quint32 mode);
    bool mayBeShadowDesktop(const QString &path);
    void useShadowDesktopPath(const QString &path);
    QSet<QString> ignoredPaths() const;
    void followIgnoredItems();

    SettingsServices m_services;
    std::unique_ptr<Ui::Preferences> m_ui;
    IgnoreDesktopItemsObjectController *m_ignoreItems = nullptr;
    QSet<QString> m_ignoredPaths; // as the checklist last read them
};
