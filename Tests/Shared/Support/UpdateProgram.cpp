// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// A program that a test copies into a bundle of its own. Each argument is a command.
#include "Platform/Core/Text/Console.h"
#include "Shared/Log/ZQLog.h"
#include "Shared/Support/ZQSoftwareUpdate.h"

#include <QCoreApplication>

#include <functional>
#include <map>

namespace {

const std::map<QString, std::function<void()>> &commands()
{
    static const std::map<QString, std::function<void()>> all{
        {QStringLiteral("path"), [] { platform::printLine(ZQSoftwareUpdate::updaterPath()); }},
        {QStringLiteral("available"),
         [] {
             platform::printLine(ZQSoftwareUpdate::isAvailable() ? QStringLiteral("yes")
                                                                 : QStringLiteral("no"));
         }},
        {QStringLiteral("launch"), [] { ZQSoftwareUpdate::launchSoftwareUpdate(); }},
        {QStringLiteral("check"), [] { ZQSoftwareUpdate::automaticallyCheckForUpdates(); }},
        {QStringLiteral("startup"), [] { ZQSoftwareUpdate().startup(); }},
        {QStringLiteral("awake"),
         [] {
             ZQSoftwareUpdate update;
             QMetaObject::invokeMethod(&update, "awakeFromNib");
         }},
        {QStringLiteral("action"),
         [] {
             ZQSoftwareUpdate update;
             QMetaObject::invokeMethod(&update, "manualUpdateCheck");
         }},
        {QStringLiteral("log"), [] { ZQLog::createNewLog(); }},
    };
    return all;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    for (const auto &argument : QCoreApplication::arguments().mid(1)) {
        commands().at(argument)();
    }
    ZQLog::finishWriting();
    return 0;
}
