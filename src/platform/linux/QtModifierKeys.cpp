#include "QtModifierKeys.h"

#include <QGuiApplication>

bool QtModifierKeys::isOptionPressed() const
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::AltModifier);
}
