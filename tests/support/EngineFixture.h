#pragma once

#include "Brevano.h"
#include "BrevanoData.h"
#include "FileNames.h"
#include "FileViewer.h"
#include "FreedesktopTrash.h"
#include "LocalItemInfo.h"
#include "ModifierKeys.h"
#include "NotificationCenter.h"
#include "PropertyListWriter.h"
#include "RecordingAlertPresenter.h"
#include "RecordingNotifier.h"
#include "SandboxHome.h"
#include "VirtualScheduler.h"

#include <fcntl.h>
#include <sys/stat.h>

// Remembers what the engine asked the file manager to do.
class RecordingFileViewer : public FileViewer
{
public:
    bool open(const QString &path) override { return record("open", path); }
    bool reveal(const QString &path) override { return record("reveal", path); }
    bool openFolder(const QString &path) override { return record("openFolder", path); }
    QStringList m_calls;

private:
    bool record(const char *what, const QString &path)
    {
        m_calls.append(QLatin1String(what) + ' ' + path);
        return true;
    }
};

class FakeModifierKeys : public ModifierKeys
{
public:
    bool isOptionPressed() const override { return m_option; }
    bool m_option = false;
};

// A store and an engine over a sandbox HOME on virtual time, with the real item
// facts and Trash, and recording notifier and file viewer.
struct EngineFixture
{
    SandboxHome sandbox;
    // Virtual time starts at the real time, so that new files are new.
    VirtualScheduler scheduler{QDateTime::currentDateTimeUtc()};
    NotificationCenter notifications;
    LocalItemInfo itemInfo;
    FreedesktopTrash trash;
    RecordingNotifier notifier;
    RecordingFileViewer fileViewer;
    FakeModifierKeys modifierKeys;
    RecordingAlertPresenter alerts;
    BrevanoData data{scheduler, notifications, alerts};
    Brevano engine;

    // With realNotifier, the engine notifies through it instead of the recorder.
    explicit EngineFixture(UserNotifier *realNotifier = nullptr)
        : engine(data,
                 EngineServices{scheduler, notifications, itemInfo, trash,
                                realNotifier ? *realNotifier : notifier, fileViewer, modifierKeys})
    {
    }

    void load()
    {
        data.loadDataFile();
        engine.linkSaveData(data.saveData());
        data.setTidyStatusSource(&engine);
    }
    // An enabled engine announcing a scheduled tidy of one settled Desktop item.
    void announceScheduledTidyOf(const QString &name)
    {
        load();
        engine.setEnabled(true);
        desktopItem(name, 600);
        engine.performTidyFromRequest(Brevano::TidyRequestScheduled);
    }
    // Uses folder/Shadow (on another file system, say) as the Shadow Desktop.
    QString shadowDesktopIn(const QString &folder)
    {
        const QString shadow = folder + "/Shadow";
        QDir().mkpath(shadow);
        data.setShadowDesktopPath(shadow);
        return shadow;
    }
    void writeDataFile(const PropertyDictionary &root) const
    {
        sandbox.write(QStringLiteral(".local/share/Brevano/Brevano.data"),
                      *PropertyListWriter::write(root));
    }
    // Starts from the data file another fixture saved.
    void adoptDataFileOf(const EngineFixture &other) const
    {
        QFile file(other.sandbox.dataFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        sandbox.write(QStringLiteral(".local/share/Brevano/Brevano.data"), file.readAll());
    }
    // A Desktop item last modified `age` before the virtual now.
    QString desktopItem(const QString &name, qint64 ageSeconds = 3600,
                        const QByteArray &content = "x")
    {
        const QString path = sandbox.write("Desktop/" + name, content);
        setAge(path, ageSeconds);
        return path;
    }
    // Dates files, folders and links alike (a link's own date, not its target's).
    void setAge(const QString &path, qint64 ageSeconds)
    {
        const qint64 ms = scheduler.now().addSecs(-ageSeconds).toMSecsSinceEpoch();
        const struct timespec time
        {
            ms / 1000, (ms % 1000) * 1000000
        };
        const struct timespec times[2] = {time, time};
        QVERIFY2(::utimensat(AT_FDCWD, FileNames::encode(path).constData(), times,
                             AT_SYMLINK_NOFOLLOW) == 0,
                 qPrintable(path));
    }
    QStringList shadowEntries() const
    {
        return QDir(sandbox.shadowDesktop())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDir::Name | QDir::IgnoreCase);
    }
    QStringList desktopEntries() const
    {
        return QDir(sandbox.desktop())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDir::Name | QDir::IgnoreCase);
    }
};
