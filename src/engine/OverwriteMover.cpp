#include "OverwriteMover.h"

#include "FileMover.h"
#include "FileStat.h"
#include "ShadowDesktopPaths.h"
#include "Trash.h"

QString OverwriteMover::plannedTarget(const QString &target, quint32 mode)
{
    if (mode == KeepBoth)
        return ShadowDesktopPaths::generateUniqueFilename(target);
    return mode == FailOnClash || mode == Replace ? target : QString();
}

OverwriteMover::Outcome OverwriteMover::move(const QString &source, const QString &target,
                                             quint32 mode) const
{
    switch (mode) {
    case FailOnClash: {
        const FileMover::Result result = FileMover::move(source, target);
        if (result.status == FileMover::Status::TargetExists)
            return {false, target,
                    QStringLiteral("an item named so is already in the Shadow Desktop")};
        return {result.moved(), target, result.message};
    }
    case Replace: {
        FileMover::Result result = FileMover::move(source, target);
        if (result.status != FileMover::Status::TargetExists)
            return {result.moved(), target, result.message};
        // The item in the way goes to the Trash, never away for good.
        const Trash::Result trashed = m_trash.trash(target);
        if (!trashed.ok)
            return {false, target,
                    QStringLiteral("the item it would replace could not be moved to the Trash: %1")
                        .arg(trashed.message)};
        result = FileMover::move(source, target);
        return {result.moved(), target, result.message};
    }
    case KeepBoth:
        // The name itself first: the rename refuses when it is taken, so a free
        // name costs no look beforehand.
        if (const FileMover::Result plain = FileMover::move(source, target);
            plain.status != FileMover::Status::TargetExists)
            return {plain.moved(), target, plain.message};
        for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
            const QString free = ShadowDesktopPaths::generateUniqueFilename(target);
            if (m_beforeMove)
                m_beforeMove(free);
            const FileMover::Result result = FileMover::move(source, free);
            // Taken between the look and the move: look again.
            if (result.status != FileMover::Status::TargetExists)
                return {result.moved(), free, result.message};
        }
        return {false, target, QStringLiteral("no free name was found")};
    default:
        return {false, target, QStringLiteral("overwrite mode %1 moves nothing").arg(mode)};
    }
}
