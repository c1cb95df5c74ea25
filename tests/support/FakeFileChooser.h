#pragma once

#include "FileChooser.h"

#include <QList>

// Answers every question with the paths set, and remembers the questions.
class FakeFileChooser : public FileChooser
{
public:
    QStringList choose(const Options &options, QWidget *) override
    {
        m_asked.append(options);
        return m_answer;
    }
    QList<Options> m_asked;
    QStringList m_answer;
};
