// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Presets/PresetFixture.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QVBoxLayout>

namespace {

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

PresetFixture::PresetFixture(UserPresets userPresets)
{
    if (userPresets == UserPresets::Remove) {
        QDir(presets::userFolder()).removeRecursively();
        const QString trash = ZQLocalPaths::trashDirectory();
        QDir(trash).removeRecursively();
        QFile::remove(trash); // a link to the desktop's
        QDir(ZQLocalPaths::userDirectory() + QStringLiteral("/.local/share/Trash"))
            .removeRecursively();
    }
    QDir(m_folder.path()).mkpath(QStringLiteral("Contents/Resources/Default Layouts"));
    const auto key = [](const QString &identifier, const QString &name) {
        return QVariantMap{{QStringLiteral("key"), identifier}, {QStringLiteral("name"), name}};
    };
    writeKeyNames(QVariantList{key(QStringLiteral("play"), QStringLiteral("Play")),
                               key(QStringLiteral("stop"), QStringLiteral("Stop")),
                               key(QStringLiteral("menu"), QString(QLatin1String("")))});
}

void PresetFixture::writeUser(const QString &title, const QVariantMap &preset)
{
    writeBytes(userPath(title), platform::propertyListToXml(preset));
}

void PresetFixture::writeDefault(const QString &title, const QVariantMap &preset) const
{
    writeBytes(defaultPath(title), platform::propertyListToXml(preset));
}

void PresetFixture::writeUserBytes(const QString &fileName, const QByteArray &bytes)
{
    writeBytes(presets::userFolder() + QLatin1Char('/') + fileName, bytes);
}

void PresetFixture::writeKeyNames(const QVariant &list) const
{
    writeBytes(m_folder.filePath(QStringLiteral("Contents/Resources/keynames.plist")),
               platform::propertyListToXml(list));
}

QVariantMap PresetFixture::user(const QString &title)
{
    return platform::dictionaryFromFile(userPath(title)).value_or(QVariantMap());
}

QByteArray PresetFixture::userBytes(const QString &title)
{
    QFile file(userPath(title));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString PresetFixture::userPath(const QString &title)
{
    return ZQLocalPaths::appSupportDirectory(Domain::User) +
           QStringLiteral("/Corvane/Ostrel/Keyboard Layouts/") + title + QStringLiteral(".okl");
}

QString PresetFixture::defaultPath(const QString &title) const
{
    return m_folder.filePath(QStringLiteral("Contents/Resources/Default Layouts/") + title +
                             QStringLiteral(".okl"));
}

void PresetFixture::open()
{
    m_browser.reset();
    m_editor.reset();
    m_window = std::make_unique<QMainWindow>();
    auto *central = new QWidget(m_window.get());
    auto *layout = new QVBoxLayout(central);
    m_applicationTable = new platform::TableView(central);
    m_applicationTable->setColumns({{QStringLiteral("title"), QStringLiteral("Application")}});
    m_keyTable = new ZQShortcutKeyTableview(central);
    m_keyTable->setColumns({{QStringLiteral("description"), QStringLiteral("Key")},
                            {QStringLiteral("shortcut"), QStringLiteral("Shortcut")}});
    layout->addWidget(m_applicationTable);
    layout->addWidget(m_keyTable);
    m_window->setCentralWidget(central);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));

    m_panel = new ZQKeyboardEditPanel(m_window.get());
    m_editor = std::make_unique<ZQKeyboardLayoutEditController>(bundle());
    m_browser = std::make_unique<ZQKeyboardLayoutAppBrowser>(bundle());
    m_editor->setTableView(m_keyTable);
    m_editor->setPanelEdit(m_panel);
    m_browser->setTableView(m_applicationTable);
    m_browser->setEditController(m_editor.get());
    m_editor->awakeFromNib();
    m_browser->awakeFromNib();
}

QStringList PresetFixture::titles() const
{
    QStringList titles;
    for (const auto &row : m_browser->dataArray()) {
        titles.append(row.title);
    }
    return titles;
}

QStringList PresetFixture::keyColumn(const QString &column) const
{
    QStringList texts;
    for (int row = 0; row < m_editor->numberOfRowsInTableView(); ++row) {
        texts.append(m_editor->tableViewObjectValueForTableColumn(column, row).toString());
    }
    return texts;
}

QVariantMap shortcutEntry(const QString &text, int keyCode, uint modifiers)
{
    return {{QStringLiteral("val"), text},
            {QStringLiteral("keycode"), keyCode},
            {QStringLiteral("modifiers"), modifiers}};
}

QVariantMap blankEntry()
{
    return {{QStringLiteral("val"), QString(QLatin1String(""))}};
}
