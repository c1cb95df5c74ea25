#pragma once

#include "AlertPresenter.h"
#include "PanelControllerDelegate.h"

#include <QRect>
#include <QtGlobal>

#include <cstdio>

// What the panel's benchmarks stand in for the application: a status item near
// the top right of the screen, application actions that do nothing, and no
// alerts (one would be a fault of the run, not a wait).
class BenchPanelHost : public AlertPresenter, public PanelControllerDelegate
{
public:
    // The offscreen platform has neither window opacity nor stacking; it says
    // so at every opening. Before the application object.
    static void quietOffscreenPlatform()
    {
        static const QtMessageHandler previous = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &context, const QString &message) {
                if (!message.startsWith(u"This plugin does not support"))
                    previous(type, context, message);
            });
    }

    int runModal(const Alert &alert) override
    {
        std::fprintf(stderr, "alert: %s\n", qPrintable(alert.title));
        return Dismissed;
    }

    QRect statusItemRectForPanelController(PanelController &) override
    {
        return QRect(700, 0, 24, 24);
    }
    void doTidy() override {}
    void restoreFiles() override {}
    void restoreAllFiles() override {}
    void emptyShadowDesktop() override {}
    void emailSupport() override {}
    void reviewApp() override {}
    void openSupport() override {}
    void openHelp() override {}
    void openAboutWindow() override {}
    void checkForUpdates() override {}
    void terminate() override {}
    bool canOpenTutorial() const override { return false; }
    void openTutorial() override {}
    bool canOpenPreferences() const override { return false; }
};
