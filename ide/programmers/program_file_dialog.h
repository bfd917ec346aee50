// The open dialog both programmer path dialogs use to pick a program file.
#pragma once

#include "ide/common/prompts.h"

namespace zorvel::ide {

// Programs on Linux carry no extension, so the dialog has no default suffix
// and shows every file, starting at the root folder.
inline FileDialogSpec programFileDialog(const QString& title) {
    return {title, QString(), QString(), QStringLiteral("All Files (*)"), QStringLiteral("/")};
}

} // namespace zorvel::ide
