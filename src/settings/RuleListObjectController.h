#pragma once

#include "ListObjectController.h"

class NotificationCenter;
class QComboBox;

// The rules of a location, chosen above the list. No rule is ever made in this
// version: the list stays empty; Add opens the rule editor, which keeps nothing.
class RuleListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    static inline const QString DragType = QStringLiteral("KVRule");

    explicit RuleListObjectController(NotificationCenter &notifications, QWidget *parent = nullptr);

    QComboBox *locationChoice() const { return m_comboBox; }
    void pressedAdd() override;

private:
    NotificationCenter &m_notifications;
    QComboBox *m_comboBox;
};
