#pragma once

#include <QObject>
#include <QString>

class QWidget;

// The path control: one button per folder from the Shadow Desktop down to the
// folder shown; a click goes to that folder. Folders above the Shadow Desktop
// are not offered.
class PathBar : public QObject
{
    Q_OBJECT
public:
    explicit PathBar(QWidget *container);

    void setPath(const QString &root, const QString &path);
    QStringList componentPaths() const { return m_paths; }

signals:
    void componentClicked(const QString &path);

private:
    QWidget *m_container;
    QStringList m_paths;
};
