// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PaneLoading/PreferencePaneLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QPluginLoader>

namespace platform {
namespace {

QString sentence(const char *text)
{
    return QCoreApplication::translate("PreferencePaneLoader", text);
}

LoadedPreferencePane failure(const QString &error)
{
    return {nullptr, error};
}

// Why the plug-in at the path could not be loaded or is not a pane.
QString reasonFor(const QPluginLoader &loader, const QString &path)
{
    const auto information = loader.metaData();
    if (information.isEmpty()) {
        return sentence("The preference pane's program “%1” is damaged: it is not a plug-in.")
            .arg(path);
    }
    const auto kind = QLatin1String(qobject_interface_iid<PreferencePanePlugin *>());
    if (information.value(QStringLiteral("IID")).toString() != kind) {
        return sentence("The plug-in “%1” is not a preference pane.").arg(path);
    }
    const auto version = information.value(QStringLiteral("version")).toInt(); // as QT_VERSION
    const auto running = QLatin1String(qVersion());
    if (version != 0 && (version >> 16 != QT_VERSION_MAJOR || version > QT_VERSION)) {
        return sentence("The preference pane's program “%1” was built for Qt %2.%3, but this "
                        "application runs with Qt %4.")
            .arg(path, QString::number(version >> 16), QString::number(version >> 8 & 0xFF),
                 running);
    }
    return sentence("The preference pane's program “%1” could not be loaded: %2")
        .arg(path, loader.errorString());
}

// A folder is trusted only where it belongs to the program's owner or to root: in a shared folder
// like "/tmp" anybody may put one.
bool isTrusted(const QFileInfo &folder, const QFileInfo &program)
{
    return folder.isDir() && (folder.ownerId() == program.ownerId() || folder.ownerId() == 0);
}

} // namespace

LoadedPreferencePane loadPreferencePane(const QString &bundlePath)
{
    const auto path = QFileInfo(bundlePath).canonicalFilePath();
    if (!QFileInfo(path).isDir()) {
        return failure(sentence("There is no preference pane at “%1”.").arg(bundlePath));
    }
    const Bundle bundle(path);
    const auto info = bundle.infoDictionary();
    if (info.isEmpty()) {
        return failure(sentence("The preference pane “%1” is damaged: its file "
                                "Contents/Info.plist is missing or cannot be read.")
                           .arg(path));
    }
    const auto executable = bundle.executablePath();
    if (executable.isNull()) {
        return failure(
            sentence("The preference pane “%1” is damaged: its program is missing.").arg(path));
    }
    QPluginLoader loader(executable);
    loader.setLoadHints(QLibrary::PreventUnloadHint | QLibrary::ResolveAllSymbolsHint);
    auto *plugin = qobject_cast<PreferencePanePlugin *>(loader.instance());
    if (plugin == nullptr) {
        return failure(reasonFor(loader, executable));
    }
    const auto name = info.value(QStringLiteral("NSPrincipalClass")).toString();
    std::unique_ptr<PreferencePane> pane(plugin->createPane(name, bundle));
    if (!pane) {
        return failure(sentence("The preference pane “%1” is damaged: it has no class named “%2”.")
                           .arg(path, name));
    }
    return {std::move(pane), {}};
}

QString findPreferencePane(const QString &bundleName, const QString &program,
                           const QString &installedFolder)
{
    const QFileInfo file(QFileInfo(program).canonicalFilePath());
    if (!bundleName.isEmpty() && file.isFile()) {
        for (auto folder = file.dir(); !folder.isRoot();) {
            const QFileInfo pane(folder.filePath(bundleName));
            if (isTrusted(pane, file)) {
                return pane.filePath();
            }
            folder = QDir(QFileInfo(folder.path()).path());
        }
    }
    const QFileInfo installed(QDir(installedFolder).filePath(bundleName));
    return !bundleName.isEmpty() && installed.isDir() ? installed.filePath() : QString();
}

} // namespace platform
