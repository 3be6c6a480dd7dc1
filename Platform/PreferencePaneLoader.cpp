// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PreferencePaneLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>

namespace platform {
LoadedPreferencePane loadPreferencePane(const QString &bundlePath)
{
    if (!QFileInfo(bundlePath).isDir()) {
        return {nullptr, QCoreApplication::translate("PreferencePaneLoader",
                                                     "There is no preference pane at “%1”.")
                             .arg(bundlePath)};
    }
    const Bundle bundle(QFileInfo(bundlePath).canonicalFilePath());
    const auto info = bundle.infoDictionary();
    if (info.isEmpty()) {
        return {nullptr, QCoreApplication::translate(
                             "PreferencePaneLoader",
                             "The preference pane “%1” is damaged: it has no readable Info.plist.")
                             .arg(bundlePath)};
    }
    const auto executable = bundle.executablePath();
    if (executable.isNull()) {
        return {nullptr, QCoreApplication::translate(
                             "PreferencePaneLoader",
                             "The preference pane “%1” is damaged: its executable is missing.")
                             .arg(bundlePath)};
    }
    QPluginLoader loader(executable);
    auto *plugin = qobject_cast<PreferencePanePlugin *>(loader.instance());
    if (plugin == nullptr) {
        return {nullptr,
                QCoreApplication::translate("PreferencePaneLoader",
                                            "The preference pane “%1” could not be loaded: %2")
                    .arg(bundlePath, loader.errorString())};
    }
    const auto name = info.value(QStringLiteral("NSPrincipalClass")).toString();
    std::unique_ptr<PreferencePane> pane(plugin->createPane(name, bundle));
    if (!pane) {
        return {nullptr, QCoreApplication::translate(
                             "PreferencePaneLoader",
                             "The preference pane “%1” is damaged: it has no class “%2”.")
                             .arg(bundlePath, name)};
    }
    return {std::move(pane), {}};
}

QString findPreferencePane(const QString &bundleName, const QString &program,
                           const QString &installedFolder)
{
    for (QDir folder = QFileInfo(program).canonicalPath(); !folder.isRoot();) {
        if (QFileInfo(folder.filePath(bundleName)).isDir()) {
            return folder.filePath(bundleName);
        }
        if (!folder.cdUp()) {
            break;
        }
    }
    const QString installed = QDir(installedFolder).filePath(bundleName);
    return QFileInfo(installed).isDir() ? installed : QString();
}

} // namespace platform
