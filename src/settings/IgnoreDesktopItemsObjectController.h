#pragma once

#include "ListObjectController.h"

#include <QHash>
#include <QStringList>

class BrevanoData;
class ItemInfo;

// Every visible item on the Desktop with a tick: ticked items are left alone by
// the tidy. Ticks are held here (hidden items included) until saveSettings(),
// which the window that shows the list calls when it is confirmed.
class IgnoreDesktopItemsObjectController : public ListObjectController
{
    Q_OBJECT
public:
    IgnoreDesktopItemsObjectController(BrevanoData &data, const ItemInfo &itemInfo,
                                       QWidget *parent = nullptr);
    ~IgnoreDesktopItemsObjectController() override;

    // Reads the Desktop and the ignore list afresh.
    void rebuildData();
    // Ignores the ticked items and stops ignoring the others.
    void saveSettings();
    void pressedCheckAll();
    void pressedUncheckAll();

    bool ignoreFile(const QString &name) const;
    bool ignoreFileAtRow(int row) const;
    void setIgnoreFileAtRow(int row, bool ignore);
    const QStringList &sortedFilenames() const { return m_sortedFilenames; }

private:
    class Model;

    // Every entry, hidden items' too.
    void setAll(bool ignore);

    BrevanoData &m_data;
    const ItemInfo &m_itemInfo;
    QString m_desktop;
    QStringList m_sortedFilenames;
    QHash<QString, bool> m_checkStatus; // every Desktop item by name, hidden ones too
    Model *m_model;
};
