#pragma once

#include "QuickFilterItem.h" // complete, so that the signal's argument has a meta type

#include <QFrame>

#include <memory>

class QKeyEvent;
namespace Ui {
class ViewOptionsPopoverViewController;
}

// Edits one view's options in place inside the panel: style, icon size, folder
// style, icon style and the date filter. Save writes them into the view's
// working copy and applies them; Cancel leaves the working copy as it is (a
// date mode chosen in the list has already gone into it).
class ViewOptionsPopoverViewController : public QFrame
{
    Q_OBJECT
public:
    ViewOptionsPopoverViewController(QuickFilterItem &quickFilterItem, QWidget *parent = nullptr);
    ~ViewOptionsPopoverViewController() override;

    QuickFilterItem &quickFilterItem() const { return m_item; }
    void updateButtons();
    void pressedSave();
    void pressedCancel();

signals:
    // Emitted from inside this frame's handlers: close it with deleteLater().
    void applyViewOptionsChange(QuickFilterItem *item);
    void cancelViewOptionsChange();

protected:
    // Return saves and Escape cancels; neither reaches the panel.
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    std::unique_ptr<Ui::ViewOptionsPopoverViewController> m_ui;
    QuickFilterItem &m_item;
};
