// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualDocument.h"
#include "Packaging/ManualMaker/ManualPrinter.h"

#include <QBuffer>
#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QSaveFile>

#include <cstdio>

namespace {

constexpr int failed = 1;
constexpr int badUsage = 2;

int fail(const QString &message, int code = failed)
{
    std::fprintf(stderr, "manual-maker: %s\n", qUtf8Printable(message));
    return code;
}

int makeManual(const QString &source, const QString &pictures, const QString &target,
               const QString &version)
{
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(QStringLiteral("cannot read %1: %2").arg(source, file.errorString()));
    }
    ManualDocument document(pictures);
    const QString reason = document.take(QString::fromUtf8(file.readAll()));
    if (!reason.isNull()) {
        return fail(QStringLiteral("%1: %2").arg(source, reason));
    }
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    if (!printManual(document, version, pdf)) {
        return fail(QStringLiteral("cannot print %1").arg(source));
    }
    QSaveFile output(target);
    if (!output.open(QIODevice::WriteOnly) || output.write(pdf.data()) != pdf.size() ||
        !output.commit()) {
        return fail(QStringLiteral("cannot write %1: %2").arg(target, output.errorString()));
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    // What a distance is, whatever the screen; see manualStyle::distancesPerInch.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("manual-maker"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Makes a PDF from a manual in Markdown and its pictures.\n\nExit status: 0 on success, "
        "1 if the PDF could not be made, 2 if the arguments are wrong."));
    parser.addHelpOption();
    const QCommandLineOption versionOption(QStringLiteral("edition"),
                                           QStringLiteral("The version to name on each page."),
                                           QStringLiteral("VERSION"));
    parser.addOption(versionOption);
    parser.addPositionalArgument(QStringLiteral("SOURCE"), QStringLiteral("The text."));
    parser.addPositionalArgument(QStringLiteral("PICTURES"),
                                 QStringLiteral("The folder of the pictures."));
    parser.addPositionalArgument(QStringLiteral("PDF"), QStringLiteral("The file to write."));
    parser.process(application);
    const auto arguments = parser.positionalArguments();
    if (arguments.size() != 3) {
        return fail(QStringLiteral("SOURCE, PICTURES and PDF are needed; see --help"), badUsage);
    }
    return makeManual(arguments[0], arguments[1], arguments[2], parser.value(versionOption));
}
