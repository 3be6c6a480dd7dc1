// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchJob.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/FileName.h"

#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <map>

namespace platform {
namespace {

constexpr auto maxArguments = 4096;
constexpr auto maxArgumentBytes = 100000; // the system takes 131071 in one argument
constexpr qlonglong maxThrottle = 86400;

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

// Reads the keys of one job file, up to the first that is wrong.
class Reader {
public:
    Reader(QVariantMap dictionary, const QByteArray &file) : m_dictionary(std::move(dictionary))
    {
        m_job.file = file;
    }

    // The checked job; nothing, with the reason in error, for an invalid one.
    std::optional<LaunchJob> read(QString *error);

private:
    bool isValid() const { return m_error.isNull(); }
    void fail(const QString &text);
    void failKey(const QString &text);

    void readKey(const QVariant &value);
    void checkWhole();

    QByteArray bytes(const QVariant &value);
    QByteArray path(const QVariant &value);
    void checkLength(const QByteArray &path);
    bool boolean(const QVariant &value);
    qlonglong integer(const QVariant &value, qlonglong minimum, qlonglong maximum);

    void readLabel(const QVariant &value);
    void readArguments(const QVariant &value);
    void readEnvironment(const QVariant &value);
    void readKeepAlive(const QVariant &value);
    void readUmask(const QVariant &value);
    void readProcessType(const QVariant &value);

    QVariantMap m_dictionary;
    LaunchJob m_job;
    QString m_key;
    QString m_error;
};

std::optional<LaunchJob> Reader::read(QString *error)
{
    for (auto item = m_dictionary.cbegin(); item != m_dictionary.cend() && isValid(); ++item) {
        m_key = item.key();
        readKey(item.value());
    }
    if (isValid()) {
        checkWhole();
    }
    if (isValid()) {
        return m_job;
    }
    *error = m_error;
    return std::nullopt;
}

void Reader::fail(const QString &text)
{
    if (isValid()) {
        m_error = QStringLiteral("%1: %2").arg(readableName(m_job.file), text);
    }
}

void Reader::failKey(const QString &text)
{
    fail(QStringLiteral("the key \"%1\" %2").arg(readableName(m_key.toUtf8()), text));
}

// Text, or bytes for what is not UTF-8.
QByteArray Reader::bytes(const QVariant &value)
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
    if (holdsNoncharacter(result)) {
        failKey(QStringLiteral("holds a noncharacter"));
    }
    if (result.size() > maxArgumentBytes) {
        failKey(QStringLiteral("is too long"));
    }
    return result;
}

QByteArray Reader::path(const QVariant &value)
{
    auto result = bytes(value);
    if (!result.startsWith('/')) {
        failKey(QStringLiteral("must be an absolute path"));
    }
    checkLength(result);
    return result;
}

// What the system takes in a path and in each name of it.
void Reader::checkLength(const QByteArray &path)
{
    const auto names = path.split('/');
    if (path.size() >= PATH_MAX) {
        failKey(QStringLiteral("is a path of more than %1 bytes").arg(PATH_MAX - 1));
    } else if (std::any_of(names.begin(), names.end(),
                           [](const QByteArray &name) { return name.size() > NAME_MAX; })) {
        failKey(QStringLiteral("is a path with a name of more than %1 bytes").arg(NAME_MAX));
    }
}

bool Reader::boolean(const QVariant &value)
{
    if (type(value) != QMetaType::Bool) {
        failKey(QStringLiteral("must be true or false"));
    }
    return value.toBool();
}

qlonglong Reader::integer(const QVariant &value, qlonglong minimum, qlonglong maximum)
{
    const auto isInteger = type(value) == QMetaType::LongLong;
    const auto number = value.toLongLong();
    if (!isInteger || number < minimum || number > maximum) {
        failKey(QStringLiteral("must be an integer from %1 to %2").arg(minimum).arg(maximum));
    }
    return number;
}

void Reader::readLabel(const QVariant &value)
{
    m_job.label = type(value) == QMetaType::QString ? value.toString().toUtf8() : QByteArray();
    const auto objection = launchLabelObjection(m_job.label);
    if (type(value) != QMetaType::QString) {
        failKey(QStringLiteral("must be a string"));
    } else if (!objection.isNull()) {
        failKey(objection);
    }
}

void Reader::readArguments(const QVariant &value)
{
    const auto list = value.toList();
    if (type(value) != QMetaType::QVariantList || list.isEmpty() || list.size() > maxArguments) {
        failKey(QStringLiteral("must be an array of 1 to %1 strings").arg(maxArguments));
        return;
    }
    auto left = maxArgumentBytes;
    for (const auto &item : list) {
        m_job.arguments << bytes(item);
        left -= static_cast<int>(m_job.arguments.last().size()) + 1;
        if (left < 0) {
            failKey(QStringLiteral("is too long"));
        }
        if (!isValid()) {
            return;
        }
    }
}

void Reader::readEnvironment(const QVariant &value)
{
    if (type(value) != QMetaType::QVariantMap) {
        failKey(QStringLiteral("must be a dictionary of strings"));
        return;
    }
    const auto variables = value.toMap();
    auto left = maxArgumentBytes;
    for (auto item = variables.cbegin(); item != variables.cend() && isValid(); ++item) {
        const auto text = item.value().toString();
        left -= static_cast<int>(item.key().size() + text.size()) + 2;
        if (type(item.value()) != QMetaType::QString) {
            failKey(QStringLiteral("must be a dictionary of strings"));
        } else if (!isEnvironmentName(item.key())) {
            failKey(QStringLiteral("has the name \"%1\", which no environment variable has")
                        .arg(readableName(item.key().toUtf8())));
        } else if (!isEnvironmentValue(text)) {
            failKey(QStringLiteral("has control characters in the value of %1").arg(item.key()));
        } else if (holdsNoncharacter(text.toUtf8())) {
            failKey(QStringLiteral("has a noncharacter in the value of %1").arg(item.key()));
        } else if (left < 0) {
            failKey(QStringLiteral("is too long"));
        }
        m_job.environment << item.key().toUtf8() + '=' + text.toUtf8();
    }
}

void Reader::readKeepAlive(const QVariant &value)
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
void Reader::readUmask(const QVariant &value)
{
    if (type(value) == QMetaType::QString) {
        auto isOctal = false;
        const auto mask = value.toString().toLongLong(&isOctal, 8);
        m_job.umask = static_cast<mode_t>(integer(isOctal ? mask : -1LL, 0, 0777));
    } else {
        m_job.umask = static_cast<mode_t>(integer(value, 0, 0777));
    }
}

void Reader::readProcessType(const QVariant &value)
{
    static const std::array kinds{"Background", "Standard", "Adaptive", "Interactive"};
    const auto kind = value.toString().toUtf8();
    if (std::none_of(kinds.begin(), kinds.end(),
                     [&](const char *known) { return kind == known; })) {
        failKey(QStringLiteral("must be Background, Standard, Adaptive or Interactive"));
    }
    m_job.isBackground = kind == kinds.front();
}

void Reader::readKey(const QVariant &value)
{
    const std::map<QString, std::function<void()>> keys{
        {QStringLiteral("Label"), [&] { readLabel(value); }},
        {QStringLiteral("Program"), [&] { m_job.program = path(value); }},
        {QStringLiteral("ProgramArguments"), [&] { readArguments(value); }},
        {QStringLiteral("WorkingDirectory"), [&] { m_job.workingDirectory = path(value); }},
        {QStringLiteral("RunAtLoad"), [&] { m_job.runAtLoad = boolean(value); }},
        {QStringLiteral("KeepAlive"), [&] { readKeepAlive(value); }},
        {QStringLiteral("EnvironmentVariables"), [&] { readEnvironment(value); }},
        {QStringLiteral("StandardInPath"), [&] { m_job.standardInPath = path(value); }},
        {QStringLiteral("StandardOutPath"), [&] { m_job.standardOutPath = path(value); }},
        {QStringLiteral("StandardErrorPath"), [&] { m_job.standardErrorPath = path(value); }},
        {QStringLiteral("Nice"), [&] { m_job.nice = static_cast<int>(integer(value, -20, 19)); }},
        {QStringLiteral("Umask"), [&] { readUmask(value); }},
        {QStringLiteral("ThrottleInterval"),
         [&] { m_job.throttleInterval = std::chrono::seconds(integer(value, 1, maxThrottle)); }},
        {QStringLiteral("ProcessType"), [&] { readProcessType(value); }},
        {QStringLiteral("Disabled"), [&] { m_job.isDisabled = boolean(value); }},
    };
    const auto key = keys.find(m_key);
    if (key == keys.end()) {
        failKey(QStringLiteral("has no meaning here"));
    } else {
        key->second();
    }
}

void Reader::checkWhole()
{
    if (m_job.program.isEmpty() && !m_job.arguments.isEmpty()) {
        m_key = QStringLiteral("ProgramArguments");
        m_job.program = m_job.arguments.first();
        if (!m_job.program.startsWith('/')) {
            failKey(QStringLiteral("must begin with an absolute path"));
        }
        checkLength(m_job.program);
    }
    const auto named = launchLabelOfFile(m_job.file);
    if (m_job.label.isEmpty()) {
        fail(QStringLiteral("the key \"Label\" is missing"));
    } else if (named != m_job.label) {
        fail(QStringLiteral("a job with the label \"%1\" belongs in a file \"%1.plist\"")
                 .arg(readableName(m_job.label)));
    } else if (m_job.program.isEmpty()) {
        fail(QStringLiteral("the keys \"Program\" and \"ProgramArguments\" are both missing"));
    } else if (m_job.program.endsWith('/')) {
        fail(QStringLiteral("the program is a folder"));
    } else if (m_job.arguments.isEmpty()) {
        m_job.arguments << m_job.program;
    }
}

} // namespace

std::optional<LaunchJob> launchJobFromData(const QByteArray &data, const QByteArray &file,
                                           QString *error)
{
    const auto value =
        data.size() <= maximumLaunchJobSize ? propertyListFromData(data) : std::nullopt;
    if (!value || value->userType() != QMetaType::QVariantMap) {
        *error =
            QStringLiteral("%1: not a property list with a dictionary").arg(readableName(file));
        return std::nullopt;
    }
    return Reader(value->toMap(), file).read(error);
}

} // namespace platform
