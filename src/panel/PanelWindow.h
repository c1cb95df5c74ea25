#pragma once

#include "PanelBackgroundView.h"

#include <memory>

namespace Ui {
class Panel;
}
class QSizeGrip;

// The panel's frameless window: its controls come from the "Panel" layout; it
// reports losing the focus, Escape and resizes, and floats above other windows.
class PanelWindow : public PanelBackgroundView
{
    Q_OBJECT
public:
    explicit PanelWindow(QWidget *parent = nullptr);
    ~PanelWindow() override;

    Ui::Panel &ui() const { return *m_ui; }

signals:
    void resignedKey();     // windowDidResignKey
    void cancelOperation(); // Escape
    void resized();
    void closing();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void updateBand();
    std::unique_ptr<Ui::Panel> m_ui;
    QSizeGrip *m_sizeGrip;
};
