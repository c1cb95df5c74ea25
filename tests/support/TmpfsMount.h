#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

// A real tmpfs of a given size: a second file system for moves across file
// systems, topdir trashes and full disks. Needs root; isValid() says whether
// the mount is there, and tests skip when it is not.
class TmpfsMount
{
public:
    explicit TmpfsMount(const QString &size = QStringLiteral("4m"))
    {
        if (::geteuid() != 0 || !m_dir.isValid())
            return;
        m_mounted = QProcess::execute(QStringLiteral("mount"),
                                      {"-t", "tmpfs", "-o", "size=" + size + ",mode=1777", "tmpfs",
                                       m_dir.path()}) == 0;
    }
    ~TmpfsMount()
    {
        if (m_mounted)
            QProcess::execute(QStringLiteral("umount"), {"-l", m_dir.path()});
    }
    TmpfsMount(const TmpfsMount &) = delete;
    TmpfsMount &operator=(const TmpfsMount &) = delete;

    bool isValid() const { return m_mounted; }
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
};

#define REQUIRE_TMPFS(mount)                                                                       \
    if (!(mount).isValid())                                                                        \
    QSKIP("needs root to mount a tmpfs")
