#pragma once

#include "AlertPresenter.h"

// Alerts as modal message boxes: the question as the text, the default button
// first. Escape or closing the box is no answer (Dismissed).
class MessageBoxAlertPresenter : public AlertPresenter
{
public:
    int runModal(const Alert &alert) override;
};
