#include "PathBar.h"

#include "FileNames.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

PathBar::PathBar(QWidget *container) : QObject(container), m_container(container)
{
    auto *layout = new QHBoxLayout(container);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addStretch(1);
}

void PathBar::setPath(const QString &root, const QString &path)
{
    m_paths.clear();
    if (!root.isEmpty() && (path == root || path.startsWith(root + u'/'))) {
        m_paths.append(root);
        QString walked = root;
        const QStringList below = path.mid(root.size()).split(u'/', Qt::SkipEmptyParts);
        for (const QString &name : below)
            m_paths.append(walked += u'/' + name);
    }
    auto *layout = static_cast<QHBoxLayout *>(m_container->layout());
    // Later, not now: this may run inside one of these buttons' clicks.
    while (QLayoutItem *item = layout->takeAt(0)) {
        if (QWidget *widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
    for (qsizetype i = 0; i < m_paths.size(); ++i) {
        if (i > 0) {
            auto *separator = new QLabel(QStringLiteral("›"), m_container);
            separator->setAccessibleName(QStringLiteral("in"));
            layout->addWidget(separator);
        }
        const QString &folder = m_paths.at(i);
        auto *button = new QToolButton(m_container);
        const QString name = i == 0 ? QStringLiteral("Shadow Desktop")
                                    : FileNames::display(folder.mid(folder.lastIndexOf(u'/') + 1));
        button->setText(name);
        button->setAccessibleName(name);
        button->setToolTip(FileNames::display(folder));
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setObjectName(QStringLiteral("pathComponent%1").arg(i));
        connect(button, &QToolButton::clicked, this,
                [this, folder] { emit componentClicked(folder); });
        layout->addWidget(button);
    }
    layout->addStretch(1);
}
