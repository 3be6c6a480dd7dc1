// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Hosts/SettingsWindow/SettingsService.h"
#include "Hosts/SettingsWindow/SettingsWindow.h"
#include "Platform/Desktop/PaneLoading/PreferencePaneLoader.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int failed = 1;
constexpr int badUsage = 2;

int fail(const QString &message, int code)
{
    std::fprintf(stderr, "ostrel-settings: %s\n", qUtf8Printable(message));
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
#endif
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("ostrel-settings"));
    QApplication::setApplicationVersion(QStringLiteral(OSTREL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.corvane.OstrelSettings"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows the Ostrel settings in their own window. If one is\n"
                       "open already, it comes to the front.\n\n"
                       "Exit status: 0 on success, 1 if the pane could not be shown or the "
                       "picture could not be written, 2 if the options are wrong."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption paneOption(QStringLiteral("pane"),
                                        QStringLiteral("Load this preference pane bundle."),
                                        QStringLiteral("PATH"));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        QStringLiteral("Write a picture of the pane to this PNG file and exit."),
        QStringLiteral("FILE"));
    const QCommandLineOption pageOption(
        QStringLiteral("page"),
        QStringLiteral("Open this page: general, keyboard, network or security."),
        QStringLiteral("NAME"));
    parser.addOptions({paneOption, screenshotOption, pageOption});
    parser.process(application);
    if (!parser.positionalArguments().isEmpty()) {
        return fail(QStringLiteral("unexpected argument \"%1\"; see --help")
                        .arg(parser.positionalArguments().constFirst()),
                    badUsage);
    }

    SettingsService service;
    // A picture needs no place on the screen, and another bundle's pane is another program.
    if (!parser.isSet(screenshotOption) && !parser.isSet(paneOption)) {
        if (const auto status = service.start(parser.value(pageOption))) {
            return *status;
        }
    }

    const QString path = parser.isSet(paneOption)
                             ? QDir(parser.value(paneOption)).absolutePath()
                             : platform::findPreferencePane(QStringLiteral("Ostrel.prefPane"),
                                                            QApplication::applicationFilePath(),
                                                            QStringLiteral(OSTREL_PANE_FOLDER));
    if (path.isNull()) {
        return fail(
            QStringLiteral("Ostrel.prefPane was found neither beside this program nor in %1")
                .arg(QStringLiteral(OSTREL_PANE_FOLDER)),
            failed);
    }
    auto loaded = platform::loadPreferencePane(path);
    if (!loaded.pane) {
        return fail(loaded.error, failed);
    }

    SettingsWindow window(std::move(loaded.pane));
    const auto error =
        parser.isSet(pageOption) ? window.showPage(parser.value(pageOption)) : QString();
    if (!error.isNull()) {
        return fail(error, badUsage);
    }
    service.setWindow(&window);
    window.show();
    if (!parser.isSet(screenshotOption)) {
        return QApplication::exec();
    }
    int result = 0;
    // After the first pass of the event loop the window has its final size.
    QTimer::singleShot(0, &window, [&] {
        const QString file = parser.value(screenshotOption);
        if (!window.saveScreenshot(file)) {
            result = fail(QStringLiteral("cannot write the picture %1").arg(file), failed);
        }
        QApplication::quit();
    });
    QApplication::exec();
    return result;
}
