#pragma once

#include "SingleInstance.h"

#include <QDialog>

#include <memory>

namespace Ui {
class Filter;
}

// The filter editor. Filters are not available in this version: Save is off
// and says why; Cancel closes.
class FilterWindowController : public QDialog, public SingleInstance<FilterWindowController>
{
    Q_OBJECT
public:
    explicit FilterWindowController(QWidget *parent = nullptr);
    ~FilterWindowController() override;

    void pressedCancel();

private:
    std::unique_ptr<Ui::Filter> m_ui;
};
