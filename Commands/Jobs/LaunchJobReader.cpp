// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchJobReader.h"

#include "Platform/Core/Text/FileName.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

constexpr auto mostArguments = 4096;
constexpr auto mostArgumentBytes = 100000; // the system takes 131071 in one argument
constexpr qlonglong longestThrottle = 86400;

bool isControl(QChar character)
{
    return character.category() == QChar::Other_Control;
}

int type(const QVariant &value)
{
    return value.userType();
}

bool isEnvironmentName(const QString &name)
{
    const auto fits = [](QChar character) {
        const auto code = character.unicode();
        return (code >= u'A' && code <= u'Z') || (code >= u'a' && code <= u'z') ||
               (code >= u'0' && code <= u'9') || code == u'_';
    };
    return !name.isEmpty() && !(name.at(0) >= u'0' && name.at(0) <= u'9') &&
           std::all_of(name.begin(), name.end(), fits);
}

// Bash allows line breaks and tabs in values, and so does systemd.
bool isEnvironmentValue(const QString &value)
{
    return std::none_of(value.begin(), value.end(), [](QChar character) {
        return (isControl(character) && character != u'\n' && character != u'\t') ||
               character.isNull();
    });
}

} // namespace

LaunchJobReader::LaunchJobReader(QVariantMap dictionary, const QByteArray &file)
    : m_dictionary(std::move(dictionary))
{
    m_job.file = file;
}

std::optional<LaunchJob> LaunchJobReader::read(QString *error)
{
    for (auto item = m_dictionary.cbegin(); item != m_dictionary.cend() && sound(); ++item) {
        readKey(item.key(), item.value());
    }
    if (sound()) {
        checkWhole();
    }
    if (sound()) {
        return m_job;
    }
    *error = m_error;
    return std::nullopt;
}

void LaunchJobReader::fail(const QString &text)
{
    if (sound()) {
        m_error = QStringLiteral("%1: %2").arg(readableName(m_job.file), text);
    }
}

void LaunchJobReader::failKey(const QString &text)
{
    fail(QStringLiteral("the key \"%1\" %2").arg(readableName(m_key.toUtf8()), text));
}

// Text, or bytes for what is not UTF-8.
QByteArray LaunchJobReader::bytes(const QVariant &value)
{
    QByteArray result;
    if (type(value) == QMetaType::QString) {
        result = fileNameBytes(value.toString());
    } else if (type(value) == QMetaType::QByteArray) {
        result = value.toByteArray();
    } else {
        failKey(QStringLiteral("must be a string"));
    }
    if (result.contains('\0')) {
        failKey(QStringLiteral("holds a null character"));
    }
    if (result.size() > mostArgumentBytes) {
        failKey(QStringLiteral("is too long"));
    }
    return result;
}

QByteArray LaunchJobReader::path(const QVariant &value)
{
    auto result = bytes(value);
    if (!result.startsWith('/')) {
        failKey(QStringLiteral("must be an absolute path"));
    }
    return result;
}

bool LaunchJobReader::boolean(const QVariant &value)
{
    if (type(value) != QMetaType::Bool) {
        failKey(QStringLiteral("must be true or false"));
    }
    return value.toBool();
}

qlonglong LaunchJobReader::integer(const QVariant &value, qlonglong least, qlonglong most)
{
    const auto isInteger = type(value) == QMetaType::LongLong;
    const auto number = value.toLongLong();
    if (!isInteger || number < least || number > most) {
        failKey(QStringLiteral("must be an integer from %1 to %2").arg(least).arg(most));
    }
    return number;
}

void LaunchJobReader::readLabel(const QVariant &value)
{
    m_job.label = type(value) == QMetaType::QString ? value.toString().toUtf8() : QByteArray();
    const auto objection = launchLabelObjection(m_job.label);
    if (type(value) != QMetaType::QString) {
        failKey(QStringLiteral("must be a string"));
    } else if (!objection.isNull()) {
        failKey(objection);
    }
}

void LaunchJobReader::readProgram(const QVariant &value)
{
    m_job.program = path(value);
}

void LaunchJobReader::readArguments(const QVariant &value)
{
    const auto list = value.toList();
    if (type(value) != QMetaType::QVariantList || list.isEmpty() || list.size() > mostArguments) {
        failKey(QStringLiteral("must be an array of 1 to %1 strings").arg(mostArguments));
        return;
    }
    auto left = mostArgumentBytes;
    for (const auto &item : list) {
        m_job.arguments << bytes(item);
        left -= static_cast<int>(m_job.arguments.last().size()) + 1;
        if (left < 0) {
            failKey(QStringLiteral("is too long"));
        }
        if (!sound()) {
            return;
        }
    }
}

void LaunchJobReader::readEnvironment(const QVariant &value)
{
    if (type(value) != QMetaType::QVariantMap) {
        failKey(QStringLiteral("must be a dictionary of strings"));
        return;
    }
    const auto variables = value.toMap();
    auto left = mostArgumentBytes;
    for (auto item = variables.cbegin(); item != variables.cend() && sound(); ++item) {
        const auto text = item.value().toString();
        left -= static_cast<int>(item.key().size() + text.size()) + 2;
        if (type(item.value()) != QMetaType::QString) {
            failKey(QStringLiteral("must be a dictionary of strings"));
        } else if (!isEnvironmentName(item.key())) {
            failKey(QStringLiteral("has the name \"%1\", which no environment variable has")
                        .arg(readableName(item.key().toUtf8())));
        } else if (!isEnvironmentValue(text)) {
            failKey(QStringLiteral("has control characters in the value of %1").arg(item.key()));
        } else if (left < 0) {
            failKey(QStringLiteral("is too long"));
        }
        m_job.environment << item.key().toUtf8() + '=' + text.toUtf8();
    }
}

void LaunchJobReader::readKeepAlive(const QVariant &value)
{
    if (type(value) == QMetaType::Bool) {
        m_job.keepAlive =
            value.toBool() ? LaunchJob::KeepAlive::Always : LaunchJob::KeepAlive::Never;
        return;
    }
    const auto conditions = value.toMap();
    const auto name = QStringLiteral("SuccessfulExit");
    if (type(value) != QMetaType::QVariantMap) {
        failKey(QStringLiteral("must be true, false or a dictionary"));
    } else if (conditions.size() != 1 || !conditions.contains(name) ||
               type(conditions.value(name)) != QMetaType::Bool) {
        failKey(QStringLiteral("may only hold \"SuccessfulExit\", true or false"));
    } else {
        m_job.keepAlive = conditions.value(name).toBool() ? LaunchJob::KeepAlive::AfterSuccess
                                                          : LaunchJob::KeepAlive::AfterFailure;
    }
}

// As a number, or as text in the octal form that is usual for it.
void LaunchJobReader::readUmask(const QVariant &value)
{
    if (type(value) == QMetaType::QString) {
        auto isOctal = false;
        const auto mask = value.toString().toLongLong(&isOctal, 8);
        m_job.umask = static_cast<mode_t>(integer(isOctal ? mask : -1LL, 0, 0777));
    } else {
        m_job.umask = static_cast<mode_t>(integer(value, 0, 0777));
    }
}

void LaunchJobReader::readProcessType(const QVariant &value)
{
    static const std::array kinds{"Background", "Standard", "Adaptive", "Interactive"};
    const auto kind = value.toString().toUtf8();
    if (std::none_of(kinds.begin(), kinds.end(),
                     [&](const char *known) { return kind == known; })) {
        failKey(QStringLiteral("must be Background, Standard, Adaptive or Interactive"));
    }
    m_job.isBackground = kind == kinds.front();
}

void LaunchJobReader::readWorkingDirectory(const QVariant &value)
{
    m_job.workingDirectory = path(value);
}

void LaunchJobReader::readStandardIn(const QVariant &value)
{
    m_job.standardInPath = path(value);
}

void LaunchJobReader::readStandardOut(const QVariant &value)
{
    m_job.standardOutPath = path(value);
}

void LaunchJobReader::readStandardError(const QVariant &value)
{
    m_job.standardErrorPath = path(value);
}

void LaunchJobReader::readRunAtLoad(const QVariant &value)
{
    m_job.runAtLoad = boolean(value);
}

void LaunchJobReader::readDisabled(const QVariant &value)
{
    m_job.isDisabled = boolean(value);
}

void LaunchJobReader::readNice(const QVariant &value)
{
    m_job.nice = static_cast<int>(integer(value, -20, 19));
}

void LaunchJobReader::readThrottleInterval(const QVariant &value)
{
    m_job.throttleInterval = std::chrono::seconds(integer(value, 1, longestThrottle));
}

void LaunchJobReader::readKey(const QString &name, const QVariant &value)
{
    static constexpr std::array keys{
        Key{"Label", &LaunchJobReader::readLabel},
        Key{"Program", &LaunchJobReader::readProgram},
        Key{"ProgramArguments", &LaunchJobReader::readArguments},
        Key{"WorkingDirectory", &LaunchJobReader::readWorkingDirectory},
        Key{"RunAtLoad", &LaunchJobReader::readRunAtLoad},
        Key{"KeepAlive", &LaunchJobReader::readKeepAlive},
        Key{"EnvironmentVariables", &LaunchJobReader::readEnvironment},
        Key{"StandardInPath", &LaunchJobReader::readStandardIn},
        Key{"StandardOutPath", &LaunchJobReader::readStandardOut},
        Key{"StandardErrorPath", &LaunchJobReader::readStandardError},
        Key{"Nice", &LaunchJobReader::readNice},
        Key{"Umask", &LaunchJobReader::readUmask},
        Key{"ThrottleInterval", &LaunchJobReader::readThrottleInterval},
        Key{"ProcessType", &LaunchJobReader::readProcessType},
        Key{"Disabled", &LaunchJobReader::readDisabled},
    };
    m_key = name;
    const auto *key = std::find_if(keys.begin(), keys.end(), [&](const Key &known) {
        return name == QLatin1String(known.name);
    });
    if (key == keys.end()) {
        failKey(QStringLiteral("has no meaning here"));
    } else {
        (this->*key->read)(value);
    }
}

void LaunchJobReader::checkWhole()
{
    if (m_job.program.isEmpty() && !m_job.arguments.isEmpty()) {
        m_key = QStringLiteral("ProgramArguments");
        m_job.program = m_job.arguments.first();
        if (!m_job.program.startsWith('/')) {
            failKey(QStringLiteral("must begin with an absolute path"));
        }
    }
    const auto named = launchLabelOfFile(m_job.file);
    if (m_job.label.isEmpty()) {
        fail(QStringLiteral("the key \"Label\" is missing"));
    } else if (named != m_job.label) {
        fail(QStringLiteral("a job with the label \"%1\" belongs into a file \"%1.plist\"")
                 .arg(readableName(m_job.label)));
    } else if (m_job.program.isEmpty()) {
        fail(QStringLiteral("the keys \"Program\" and \"ProgramArguments\" are both missing"));
    } else if (m_job.program.endsWith('/')) {
        fail(QStringLiteral("the program is a folder"));
    } else if (m_job.arguments.isEmpty()) {
        m_job.arguments << m_job.program;
    }
}

} // namespace platform
