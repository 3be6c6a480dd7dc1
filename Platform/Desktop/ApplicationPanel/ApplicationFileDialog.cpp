// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/ApplicationFileDialog.h"

#include "Platform/Core/Text/PathText.h"
#include "Platform/Desktop/Alerts/AlertPanel.h"

namespace platform {
namespace {

bool isApplicationFolder(const QString &path)
{
    return pathExtension(path).compare(QLatin1String("app"), Qt::CaseInsensitive) == 0 &&
           QFileInfo(path).isDir();
}

} // namespace

ApplicationFileDialog::ApplicationFileDialog(QWidget *parent, const QString &folder)
    : QFileDialog(parent)
{
    setObjectName(QStringLiteral("applicationFileDialog"));
    setOptions(DontUseNativeDialog | ReadOnly | DontUseCustomDirectoryIcons);
    setWindowModality(Qt::WindowModal);
    setFileMode(ExistingFile);
    setAcceptMode(AcceptOpen);
    setNameFilter(tr("Applications") + QStringLiteral(" (*.app *.desktop)"));
    setDirectory(folder);
    // The dialog enters every folder that is activated; one that is an application is chosen.
    connect(this, &QFileDialog::directoryEntered, this, [this](const QString &path) {
        if (isApplicationFolder(path)) {
            choose(path);
        }
    });
    // It takes no folder for a choice either; as the name of a file it does.
    connect(this, &QFileDialog::currentChanged, this, [this](const QString &path) {
        if (isApplicationFolder(path)) {
            selectFile(path);
        }
    });
}

void ApplicationFileDialog::accept()
{
    const auto files = selectedFiles();
    const auto path = files.isEmpty() ? QString() : files.constFirst();
    const QFileInfo file(path);
    if (isApplicationFolder(path) || (file.isFile() && file.suffix() == QLatin1String("desktop"))) {
        choose(path);
    } else if (file.isFile()) {
        AlertDescription alert;
        alert.messageText = tr("\"%1\" is not an application").arg(file.fileName());
        alert.informativeText =
            tr("Choose an application folder (.app) or a desktop entry (.desktop).");
        auto *panel = new AlertPanel(alert, this);
        connect(panel, &AlertPanel::answered, panel, &QObject::deleteLater);
        panel->begin();
    } else {
        QFileDialog::accept(); // enters a folder, and tells where there is nothing
    }
}

void ApplicationFileDialog::choose(const QString &path)
{
    if (isVisible()) {
        hide();
        Q_EMIT chosen(path);
    }
}

} // namespace platform
