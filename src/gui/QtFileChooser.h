#pragma once

#include "FileChooser.h"

// The file chooser as a Qt file dialog.
class QtFileChooser : public FileChooser
{
public:
    QStringList choose(const Options &options, QWidget *parent) override;
};
