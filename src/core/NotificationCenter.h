#pragma once

#include <QObject>
#include <QVariant>

#include <functional>

// In-process broadcasts by name between parts of the program that do not know
// each other ("tidyComplete", "updateNextTidyText", ...).
class NotificationCenter : public QObject
{
    Q_OBJECT
public:
    static inline const QString TidyComplete = QStringLiteral("tidyComplete");
    static inline const QString UpdateNextTidyText = QStringLiteral("updateNextTidyText");
    static inline const QString UpdateQuickLayouts = QStringLiteral("updateQuickLayouts");
    static inline const QString QuickFilterChanged = QStringLiteral("quickFilterChanged");
    static inline const QString AddFileExtension = QStringLiteral("addFileExtension");
    static inline const QString OpenPreferences = QStringLiteral("OpenPreferences");
    static inline const QString LayoutItemChanged = QStringLiteral("layoutItemChanged");

    using QObject::QObject;

    static NotificationCenter &defaultCenter();

    void post(const QString &name, const QVariant &object = QVariant());
    // Calls handler for every notification of that name while context lives.
    QMetaObject::Connection observe(const QString &name, const QObject *context,
                                    std::function<void(const QVariant &)> handler);

signals:
    void posted(const QString &name, const QVariant &object);
};
