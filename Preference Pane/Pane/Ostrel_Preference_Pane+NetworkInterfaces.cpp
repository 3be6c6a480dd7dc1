// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The menu of network interfaces.
#include "Ostrel/ListenerPreferences.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Text/ShortText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Shared/Tasks/ZQTaskEx.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QPointer>

#include <future>
#include <memory>

using namespace std::chrono_literals;

namespace {

const QString nameKey = QStringLiteral("name");
const QString addressKey = QStringLiteral("macAddress");
const QString dataType = QStringLiteral("SPNetworkDataType");

constexpr std::chrono::seconds profilerTimeOut = 10s;
// From the request to end until a profiler that heeds it is gone; another is waited for no longer.
constexpr std::chrono::seconds graceTime = 2s;

// On a thread of its own: the time-out needs the main thread, which serves nobody while it reads.
std::future<QString> startSystemProfiler()
{
    const auto promise = std::make_shared<std::promise<QString>>();
    auto profile = promise->get_future();
    if (!platform::startBackgroundThread([promise] {
            promise->set_value(ZQTaskEx::stringFromTask(QStringLiteral("/usr/sbin/system_profiler"),
                                                        {dataType, QStringLiteral("-xml")},
                                                        profilerTimeOut));
        })) {
        platform::consoleLog(QStringLiteral("No thread for the system profiler"));
        return {};
    }
    return profile;
}

// Null where there is none in time.
QString waitForProfile(std::future<QString> profile)
{
    constexpr auto step = 10ms;
    if (!profile.valid()) {
        return {};
    }
    const auto end = std::chrono::steady_clock::now() + profilerTimeOut + graceTime;
    while (profile.wait_for(step) != std::future_status::ready) {
        if (std::chrono::steady_clock::now() >= end) {
            return {};
        }
        platform::runPendingMainThreadCalls();
    }
    return profile.get();
}

bool hasType(const QVariant &value, QMetaType::Type type)
{
    return value.userType() == type;
}

// The profiler's items; nothing, after a console line, where its text has none.
std::optional<QVariantList> itemsOf(const QString &profile)
{
    if (profile.isEmpty()) {
        platform::consoleLine(QStringLiteral("Unable to get system profile data"));
        return std::nullopt;
    }
    const auto list = platform::propertyListFromData(profile.toUtf8());
    if (!list || !hasType(*list, QMetaType::QVariantList)) {
        platform::consoleLine(QStringLiteral("Error 1 - Invalid system profile data"));
        return std::nullopt;
    }
    const auto first = list->toList().value(0);
    if (!hasType(first, QMetaType::QVariantMap)) {
        // There is no error 2: support knows the messages by these numbers.
        platform::consoleLine(QStringLiteral("Error 3 - Invalid system profile data"));
        return std::nullopt;
    }
    const auto document = first.toMap();
    const auto type = document.value(QStringLiteral("_dataType"));
    const auto items = document.value(QStringLiteral("_items"));
    if (!hasType(type, QMetaType::QString) || type.toString() != dataType ||
        !hasType(items, QMetaType::QVariantList)) {
        platform::consoleLine(QStringLiteral("Invalid system profile data format"));
        return std::nullopt;
    }
    return items.toList();
}

// Empty for an item that is no interface with a hardware address.
QVariantMap entryFromItem(const QVariantMap &item)
{
    const auto address =
        item.value(QStringLiteral("Ethernet")).toMap().value(QStringLiteral("MAC Address"));
    const auto name = item.value(QStringLiteral("_name"));
    if (!hasType(address, QMetaType::QString) || !hasType(name, QMetaType::QString)) {
        return {};
    }
    const auto interface = item.value(QStringLiteral("interface"));
    const auto suffix =
        interface.isValid() ? platform::format(QStringLiteral(" - %@"), interface) : QString();
    return {{nameKey, name.toString() + suffix}, {addressKey, address}};
}

std::optional<QVariantList> interfacesIn(const QString &profile)
{
    const auto items = itemsOf(profile);
    if (!items) {
        return std::nullopt;
    }
    QVariantList entries;
    for (const auto &item : *items) {
        const auto entry =
            hasType(item, QMetaType::QVariantMap) ? entryFromItem(item.toMap()) : QVariantMap();
        if (!entry.isEmpty()) {
            entries.append(entry);
        }
    }
    return entries;
}

// The menu may cut the name short. Names and addresses come from outside, and are no rich text.
QString toolTip(const QString &name, const QString &address)
{
    return QStringLiteral("<p style='white-space:pre-wrap'>%1<br>%2</p>")
        .arg(name.toHtmlEscaped(), address.toHtmlEscaped());
}

// Addresses have 17 characters; whatever else the file holds leaves the page as wide as it is.
QString shownAddress(const QString &address)
{
    constexpr int maxLength = 20;
    auto shown = platform::shortened(address, maxLength);
    for (auto &character : shown) {
        if (!character.isPrint()) {
            character = u' ';
        }
    }
    return shown;
}

} // namespace

std::optional<QVariantList> Ostrel_Preference_Pane::networkInterfaces()
{
    return interfacesIn(waitForProfile(startSystemProfiler()));
}

void Ostrel_Preference_Pane::readInterfacesAhead()
{
    m_systemProfile = startSystemProfiler();
}

void Ostrel_Preference_Pane::populateNetworkInterfaces()
{
    const QPointer<Ostrel_Preference_Pane> self(this);
    const auto found = m_systemProfile.valid()
                           ? interfacesIn(waitForProfile(std::move(m_systemProfile)))
                           : networkInterfaces();
    if (self == nullptr) {
        return; // closed by what ran while the profiler was waited for
    }
    auto *menu = m_ui->networkInterfacePopUp;
    const QSignalBlocker blocked(menu); // the first item may stand for one that is not there now
    menu->clear();
    menu->addItem(QStringLiteral("Any (recommended)"));
    for (const auto &value : found.value_or(QVariantList())) {
        const auto entry = value.toMap();
        const auto name = entry.value(nameKey).toString();
        const auto address = entry.value(addressKey).toString();
        menu->addItem(name, address);
        menu->setItemData(menu->count() - 1, toolTip(name, address), Qt::ToolTipRole);
    }
    showSavedInterface(listenerPreferences::load().value(listenerPreferences::selectedMACAddress));
}

void Ostrel_Preference_Pane::showSavedInterface(const QVariant &address)
{
    const auto saved = hasType(address, QMetaType::QString) ? address.toString() : QString();
    auto *menu = m_ui->networkInterfacePopUp;
    const QSignalBlocker blocked(menu);
    // Of several with that address the last is selected, as users know it, unless the user has just
    // chosen another. One that is not listed leaves the first item selected, and the next save
    // forgets it.
    const auto isSaved = [&](int index) {
        return !saved.isNull() && menu->itemData(index).isValid() &&
               menu->itemData(index).toString() == saved;
    };
    auto index = isSaved(menu->currentIndex()) ? menu->currentIndex() : menu->count() - 1;
    while (index > 0 && !isSaved(index)) {
        --index;
    }
    menu->setCurrentIndex(index);
    menu->setToolTip(menu->itemData(index, Qt::ToolTipRole).toString());
    const auto hint =
        index > 0 || saved.isEmpty()
            ? QString()
            : tr("The interface that was chosen, with the address %1, is not there now. The next "
                 "change of a setting forgets it.")
                  .arg(shownAddress(saved));
    m_ui->networkInterfaceHint->setText(hint);
    m_ui->networkInterfaceHint->setVisible(!hint.isNull());
    menu->setAccessibleDescription(hint.isNull() ? saved : hint); // a screen reader reads no markup
}
