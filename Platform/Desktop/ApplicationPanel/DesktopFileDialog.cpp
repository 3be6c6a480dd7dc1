// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/DesktopFileDialog.h"

#include "Platform/Core/Processes/UntraceableProcess.h"

#include <QMetaObject>
#include <qpa/qplatformdialoghelper.h>
#include <qpa/qplatformtheme.h>

#include <private/qguiapplication_p.h>

#include <memory>

namespace platform {
namespace {

// Qt's own platform theme, KDE's and others can use the portal; all of them give the class this
// name.
bool isPortals(const QObject &dialog)
{
    return QByteArray(dialog.metaObject()->className()).contains("XdgDesktopPortal");
}

} // namespace

bool canShowDesktopFileDialog()
{
    if (!isUntraceable()) {
        return true;
    }
    const auto *theme = QGuiApplicationPrivate::platformTheme();
    if (theme == nullptr || !theme->usePlatformNativeDialog(QPlatformTheme::FileDialog)) {
        return true; // Qt takes its own by itself
    }
    const std::unique_ptr<QPlatformDialogHelper> dialog(
        theme->createPlatformDialogHelper(QPlatformTheme::FileDialog));
    return dialog == nullptr || !isPortals(*dialog);
}

} // namespace platform
