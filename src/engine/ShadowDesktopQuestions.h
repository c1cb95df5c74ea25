#pragma once

#include "AlertPresenter.h"

// The questions asked before the Shadow Desktop is emptied or restored whole,
// the same wherever they are asked (a message box, a terminal).
class ShadowDesktopQuestions
{
public:
    // "Continue" (0) empties; "Cancel" or no answer leaves everything.
    static Alert empty();
    // "Yes" (0) restores and ignores, "No" (1) restores only; no answer, nothing.
    static Alert restoreAll();
};
