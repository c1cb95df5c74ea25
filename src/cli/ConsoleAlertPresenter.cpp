#include "ConsoleAlertPresenter.h"

#include <cstdio>
#include <unistd.h>

int ConsoleAlertPresenter::runModal(const Alert &alert)
{
    m_err << alert.title << '\n';
    if (!alert.message.isEmpty())
        m_err << alert.message << '\n';
    m_err.flush();
    if (alert.buttons.size() <= 1)
        return 0;
    if (!::isatty(STDIN_FILENO))
        return Dismissed;
    QTextStream in(stdin);
    for (;;) {
        m_err << alert.buttons.join(u'/') << "? ";
        m_err.flush();
        const QString answer = in.readLine().trimmed();
        if (answer.isNull()) // the end of the input
            return Dismissed;
        for (qsizetype i = 0; i < alert.buttons.size(); ++i) {
            if (!answer.isEmpty() && alert.buttons.at(i).startsWith(answer, Qt::CaseInsensitive))
                return int(i);
        }
    }
}
