#pragma once

#include "StatusItemView.h"

#include <QObject>
#include <QPointer>
#include <QRect>

#include <memory>

class QDBusServiceWatcher;
class QMenu;
class QSystemTrayIcon;

// Owns the status item: a tray icon showing the view's image. A left click is
// the view's action, a right click asks for the status menu at the pointer, a
// middle click reveals the Shadow Desktop. Qt decides once per process whether
// a StatusNotifierWatcher exists; when one appears after an icon was made
// without it, only a new process can use it, so restartForTrayHost() is
// emitted. An XEmbed tray that appears later is noticed by looking again.
class MenubarController : public QObject
{
    Q_OBJECT
public:
    explicit MenubarController(Scheduler &scheduler, QObject *parent = nullptr);
    ~MenubarController() override;

    StatusItemView &statusItemView() { return m_view; }
    QSystemTrayIcon *statusItem() const { return m_statusItem.get(); }
    bool hasActiveIcon() const { return m_view.isHighlighted(); }
    void setHasActiveIcon(bool active) { m_view.setHighlighted(active); }
    void setEnabled(bool enabled) { m_view.setEnabled(enabled); }
    static bool trayHostAvailable();
    // globalRect: the icon in global coordinates where the tray host tells
    // (XEmbed); elsewhere (StatusNotifierItem) a 1x1 rectangle at the point of
    // the last click on it, or at the pointer when it has not been clicked.
    QRect globalRect() const;

signals:
    void statusMenuRequested();
    void trayHostAvailabilityChanged(bool available);
    void restartForTrayHost();

private:
    void createStatusItem();
    static bool watcherRegistered();
    void lookForTrayHost();

    StatusItemView m_view;
    std::unique_ptr<QSystemTrayIcon> m_statusItem;
    QDBusServiceWatcher *m_watcher = nullptr;
    bool m_createdWithWatcher = false;
    bool m_available = false;
    QPoint m_lastClick;
    bool m_clicked = false;
};
