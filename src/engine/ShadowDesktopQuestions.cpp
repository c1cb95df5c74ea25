#include "ShadowDesktopQuestions.h"

Alert ShadowDesktopQuestions::empty()
{
    return Alert{QStringLiteral("All items in the Shadow Desktop folder will be moved to the "
                                "Trash. Would you like to continue?"),
                 QString(),
                 {QStringLiteral("Continue"), QStringLiteral("Cancel")}};
}

Alert ShadowDesktopQuestions::restoreAll()
{
    return Alert{QStringLiteral("Would you like the restored files to be added to the Ignore "
                                "List to prevent Brevano moving them again?"),
                 QString(),
                 {QStringLiteral("Yes"), QStringLiteral("No")}};
}
