// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Presets/KeyboardLayoutPage.h"
#include "Preference Pane/Presets/PresetTableView.h"
#include "Preference Pane/Presets/ZQShortcutKeyTableview.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"

#include <QAction>
#include <QMainWindow>
#include <QPointer>
#include <QTest>

#include <memory>

// The page in a window, on the presets of a fixture.
class Page {
public:
    explicit Page(const PresetFixture &fixture)
        : m_window(std::make_unique<QMainWindow>()), m_page(new KeyboardLayoutPage(m_window.get()))
    {
        m_page->setBundle(fixture.bundle());
        m_window->setCentralWidget(m_page);
    }
    void show()
    {
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    QMainWindow &window() { return *m_window; }
    // The page alone, as when its host shows another pane.
    void destroyPage() { delete m_page; }
    void destroyWindow() { m_window.reset(); }
    KeyboardLayoutPage &operator*() const { return *m_page; }
    KeyboardLayoutPage *operator->() const { return m_page; }
    template <typename T>
    T *control(const char *name) const
    {
        auto *found = m_page->findChild<T *>(QString::fromLatin1(name));
        Q_ASSERT(found != nullptr);
        return found;
    }
    PresetTableView *applications() const { return control<PresetTableView>("applicationTable"); }
    ZQShortcutKeyTableview *keys() const { return control<ZQShortcutKeyTableview>("keyTable"); }
    QStringList shownTitles() const
    {
        QStringList titles;
        auto *model = applications()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            titles.append(model->index(row, 0).data().toString());
        }
        return titles;
    }
    QString shortcut(int row) const { return keys()->model()->index(row, 1).data().toString(); }
    QAction *action(const char *name) const { return control<QAction>(name); }

private:
    std::unique_ptr<QMainWindow> m_window;
    QPointer<KeyboardLayoutPage> m_page;
};
