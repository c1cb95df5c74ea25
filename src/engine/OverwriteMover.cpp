#include "OverwriteMover.h"

#include "FileMover.h"
#include "FileNames.h"
#include "FileStat.h"
#include "ShadowDesktopPaths.h"
#include "Trash.h"

#include <QRandomGenerator>

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
        return {result.moved(), target, result.message,
                result.status == FileMover::Status::Incomplete};
    }
    case Replace:
        return replace(source, target);
    case KeepBoth: {
        // The name itself first: the rename refuses when it is taken, so a free
        // name costs no look beforehand.
        if (const FileMover::Result plain = FileMover::move(source, target);
            plain.status != FileMover::Status::TargetExists)
            return {plain.moved(), target, plain.message,
                    plain.status == FileMover::Status::Incomplete};
        QString chosen;
        const FileMover::Result result = moveToFreeName(source, target, chosen, m_beforeMove);
        return {result.moved(), chosen, result.message,
                result.status == FileMover::Status::Incomplete};
    }
    default:
        return {false, target, QStringLiteral("overwrite mode %1 moves nothing").arg(mode)};
    }
}

FileMover::Result
OverwriteMover::moveToFreeName(const QString &source, const QString &target, QString &chosen,
                               const std::function<void(const QString &)> &beforeMove)
{
    for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
        chosen = ShadowDesktopPaths::generateUniqueFilename(target);
        if (beforeMove)
            beforeMove(chosen);
        const FileMover::Result result = FileMover::move(source, chosen);
        // Taken between the look and the move: look again.
        if (result.status != FileMover::Status::TargetExists)
            return result;
    }
    chosen = target;
    return {FileMover::Status::Failed, QStringLiteral("no free name was found")};
}

OverwriteMover::Outcome OverwriteMover::replace(const QString &source, const QString &target) const
{
    const FileMover::Result plain = FileMover::move(source, target);
    if (plain.status != FileMover::Status::TargetExists)
        return {plain.moved(), target, plain.message,
                plain.status == FileMover::Status::Incomplete};
    // The item in the way steps aside under a hidden name in its folder.
    const QString folder = ShadowDesktopPaths::deletingLastPathComponent(target);
    QString aside;
    for (int attempt = 0; attempt < kMaxNameAttempts && aside.isEmpty(); ++attempt) {
        const QString candidate = folder + u'/' + QLatin1String(kAsidePrefix) +
                                  QString::number(QRandomGenerator::global()->generate64(), 36);
        if (FileMover::Observer *observer = FileMover::observer())
            observer->willSetAside(candidate);
        const FileMover::Result result = FileMover::rename(target, candidate);
        if (result.moved())
            aside = candidate;
        else if (result.status != FileMover::Status::TargetExists)
            return {false, target,
                    QStringLiteral("the item it would replace could not be moved aside: %1")
                        .arg(result.message)};
    }
    if (aside.isEmpty())
        return {false, target,
                QStringLiteral("no free name was found to move the item it would "
                               "replace aside")};
    // Never left under the hidden name: its own name again, else a free numbered one.
    const auto keepVisible = [&](const QString &why) {
        QString kept;
        if (moveToFreeName(aside, target, kept, m_beforeMove).moved())
            return QStringLiteral("%1, and is kept as %2")
                .arg(why, FileNames::display(ShadowDesktopPaths::lastPathComponent(kept)));
        return QStringLiteral("%1, and is left as %2").arg(why, FileNames::display(aside));
    };
    if (m_beforeMove)
        m_beforeMove(target);
    const FileMover::Result in = FileMover::move(source, target);
    if (!in.moved() && in.status != FileMover::Status::Incomplete) {
        if (FileMover::rename(aside, target).moved())
            return {false, target, in.message};
        return {false, target,
                in.message + QStringLiteral("; ") +
                    keepVisible(QStringLiteral(
                        "the item it would have replaced could not get its name back"))};
    }
    // A copy that left changed parts at the source counts as failed: the item
    // it would have replaced is not thrown away but kept beside it.
    if (in.status == FileMover::Status::Incomplete)
        return {false, target,
                in.message + QStringLiteral("; ") +
                    keepVisible(QStringLiteral("the item it would have replaced stays")),
                true};
    // The new item is in.
    const Trash::Result trashed = m_trash.trashAs(aside, target);
    if (trashed.ok)
        return {true, target, in.message};
    const QString note =
        keepVisible(QStringLiteral("the item it replaced could not be moved to the Trash (%1)")
                        .arg(trashed.message));
    return {true, target, in.message.isEmpty() ? note : in.message + QStringLiteral("; ") + note};
}
