#pragma once

#include "AppServices.h"
#include "BenchPanelHost.h"
#include "Brevano.h"
#include "PanelController.h"
#include "QtScheduler.h"

// The application's real services for a panel benchmark, as main() makes
// them: the data file loaded and the Shadow Desktop at the folder given; the
// host stands in for the rest of the application.
class BenchPanelServices
{
public:
    explicit BenchPanelServices(const QString &shadowDesktop) : m_services(m_host)
    {
        m_services.loadStore();
        m_services.data().setShadowDesktopPath(shadowDesktop);
    }

    BrevanoData &data() { return m_services.data(); }
    BenchPanelHost &host() { return m_host; }
    PanelController::Services panelServices()
    {
        Brevano &engine = m_services.engine();
        return {m_services.data(),
                engine,
                m_services.fileViewer(),
                QtScheduler::instance(),
                engine.notifications(),
                m_services.thumbnails(),
                m_host};
    }

private:
    BenchPanelHost m_host;
    AppServices m_services;
};
