// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/StartWatch.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Files/ExecutableFile.h"
#include "Platform/Core/Text/ShortText.h"
#include "Shared/Tasks/ZQTaskEx.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <array>
#include <limits>

using namespace std::chrono_literals;

namespace {

constexpr auto commandTimeout = 10s;
constexpr int maxLines = 4;
constexpr int maxLineLength = 160;

// systemd's catalogue: "Unit process exited", written for an end that is no success.
const QString processExited = QStringLiteral("98e322203f7a4ed290d09fe03c09fe15");

QString tr(const char *text)
{
    return QCoreApplication::translate("StartWatch", text);
}

qint64 now()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

// One line that fits the page, whatever a program has written.
QString shownLine(QString line)
{
    for (auto &character : line) {
        if (!character.isPrint()) {
            character = u' ';
        }
    }
    return platform::shortened(line.simplified(), maxLineLength);
}

struct Failures {
    bool areKnown = false; // whether somebody has an answer
    int count = 0;
    QStringList lines;
};

// The journal writes what is no UTF-8 as an array of bytes.
QString messageOf(const QJsonObject &entry)
{
    const auto message = entry.value(QStringLiteral("MESSAGE"));
    QByteArray bytes;
    for (const auto &byte : message.toArray()) {
        bytes += static_cast<char>(byte.toInt());
    }
    return message.isString() ? message.toString() : QString::fromUtf8(bytes);
}

// What the unit of the job and its service manager have written in that time.
Failures failuresInJournal(qint64 begin, qint64 end)
{
    const auto journalctl = QStringLiteral("/usr/bin/journalctl");
    if (!platform::isExecutableFile(journalctl)) {
        return {};
    }
    const auto unit = QStringLiteral("app-%1.service").arg(names::listenerLabel);
    const auto output = ZQTaskEx::dataFromTask(
        journalctl,
        {QStringLiteral("--user-unit=") + unit, QStringLiteral("--output=json"),
         QStringLiteral("--since=@%1").arg(begin / 1'000'000), QStringLiteral("--lines=200"),
         QStringLiteral("--no-pager"), QStringLiteral("--quiet")},
        commandTimeout);
    Failures failures;
    QString manager;
    for (const auto &line : output.split('\n')) {
        const auto entry = QJsonDocument::fromJson(line).object();
        const auto time =
            entry.value(QStringLiteral("__REALTIME_TIMESTAMP")).toString().toLongLong();
        const auto message = shownLine(messageOf(entry));
        if (time < begin || time > end || message.isEmpty()) {
            continue;
        }
        failures.areKnown = true;
        if (entry.value(QStringLiteral("MESSAGE_ID")).toString() == processExited) {
            ++failures.count;
            manager = message;
        } else if (entry.value(QStringLiteral("_SYSTEMD_USER_UNIT")).toString() == unit) {
            failures.lines << message;
        }
    }
    if (failures.lines.isEmpty() && !manager.isNull()) {
        failures.lines << manager;
    }
    failures.lines =
        failures.lines.mid(qMax(0, static_cast<int>(failures.lines.size()) - maxLines));
    return failures;
}

// Where no journal has lines of it: what keeps the jobs has the last status and counts the starts.
Failures failuresOfJob()
{
    const auto text = ZQTaskEx::stringFromTask(QStringLiteral("/bin/launchctl"),
                                               {QStringLiteral("list"), names::listenerLabel},
                                               ZQTaskEx::Encoding::UTF8, commandTimeout);
    const auto value = [&](const QString &key) {
        const QRegularExpression line(QStringLiteral("^%1 = (.*)$").arg(key),
                                      QRegularExpression::MultilineOption);
        return line.match(text).captured(1);
    };
    const auto status = value(QStringLiteral("Status")).toInt();
    if (status == 0 || value(QStringLiteral("PID")) != QStringLiteral("-")) {
        return {};
    }
    return {true,
            1 + value(QStringLiteral("Restarts")).toInt(),
            {status > 0 ? tr("It ended with the exit status %1.").arg(status)
                        : tr("It was ended by the signal %1.").arg(-status)}};
}

} // namespace

void StartWatch::begin()
{
    m_begin = now();
}

void StartWatch::follow(const QString &objection, std::chrono::milliseconds second)
{
    if (!objection.isNull()) {
        m_tell(tr("The listener could not be loaded: %1").arg(shownLine(objection)));
    }
    // The last one when a listener that is restarted every ten seconds has failed twice.
    constexpr std::array pauses{3, 5, 7, 10};
    const auto begin = m_begin.load();
    for (const auto pause : pauses) {
        if (!m_workers.sleepFor(pause * second) || m_begin != begin) {
            return;
        }
        look(begin, std::numeric_limits<Microseconds>::max());
    }
    auto mine = begin;
    m_begin.compare_exchange_strong(mine, 0);
}

void StartWatch::end()
{
    const auto begin = m_begin.exchange(0);
    if (begin != 0) {
        m_workers.start([this, begin, end = now()] { look(begin, end); });
    }
}

void StartWatch::look(Microseconds begin, Microseconds end) const
{
    auto failures = failuresInJournal(begin, end);
    if (!failures.areKnown) {
        failures = failuresOfJob();
    }
    if (failures.count > 0) {
        const auto heading =
            failures.count > 1
                ? tr("The listener keeps failing (%1 times since the start):").arg(failures.count)
                : tr("The listener has failed:");
        m_tell(heading + u'\n' + failures.lines.join(u'\n'));
    }
}
