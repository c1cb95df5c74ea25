#include "RunDescription.h"

QString RunDescription::kind(const MoveJournal::Run &run)
{
    switch (run.kind) {
    case MoveJournal::RunKind::Tidy:
        return run.detail.isEmpty() ? QStringLiteral("tidy")
                                    : QStringLiteral("tidy (%1)").arg(run.detail);
    case MoveJournal::RunKind::Undo:
        return QStringLiteral("undo of run %1").arg(run.detail);
    case MoveJournal::RunKind::Restore:
        return QStringLiteral("restore");
    case MoveJournal::RunKind::Drop:
        return QStringLiteral("drop");
    case MoveJournal::RunKind::Trash:
        return QStringLiteral("trash");
    }
    return QString();
}

QString RunDescription::line(const MoveJournal::Run &run)
{
    QString text =
        QStringLiteral("%1  %2: moved %3, failed %4, deferred %5")
            .arg(run.started.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")), kind(run))
            .arg(run.moved)
            .arg(run.failed)
            .arg(run.deferred);
    // An undo leaves some items where they are.
    if (run.skipped > 0)
        text += QStringLiteral(", skipped %1").arg(run.skipped);
    if (run.recovered)
        text += QStringLiteral(" (interrupted, recovered)");
    else if (!run.ended.isValid())
        text += QStringLiteral(" (interrupted)");
    if (run.undone)
        text += QStringLiteral(" (undone)");
    return text;
}
