#include "AppServices.h"

#include "NotificationCenter.h"
#include "QtScheduler.h"

AppServices::AppServices(AlertPresenter &alerts)
    : m_data(QtScheduler::instance(), NotificationCenter::defaultCenter(), alerts),
      m_engine(m_data,
               EngineServices{QtScheduler::instance(), NotificationCenter::defaultCenter(),
                              m_itemInfo, m_trash, m_notifier, m_fileViewer, m_modifierKeys})
{
    BrevanoData::setSharedInstance(&m_data);
    Brevano::setSharedInstance(&m_engine);
}

AppServices::~AppServices()
{
    Brevano::setSharedInstance(nullptr);
    BrevanoData::setSharedInstance(nullptr);
}

void AppServices::loadStore()
{
    m_data.loadDataFile();
    m_engine.linkSaveData(m_data.saveData());
    m_data.setTidyStatusSource(&m_engine);
}
