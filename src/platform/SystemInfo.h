#pragma once

#include <QString>

class SystemInfo
{
public:
    // "major.minor.patch" of the operating system (the kernel on Linux), or an
    // empty string when the three numbers cannot be had.
    static QString osVersion();
};
