// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Hosts/SettingsWindow/SettingsWindow.h"

#include <QIcon>
#include <QPixmap>
#include <QShortcut>
#include <QTimer>

SettingsWindow::SettingsWindow(std::unique_ptr<platform::PreferencePane> pane)
    : m_pane(std::move(pane))
{
    auto *view = m_pane->loadMainView(this);
    view->setContentsMargins(6, 6, 6, 6);
    setCentralWidget(view);
    setWindowTitle(view->windowTitle());
    for (const auto key : {QKeySequence::Quit, QKeySequence::Close}) {
        for (const auto &sequence : QKeySequence::keyBindings(key)) {
            connect(new QShortcut(sequence, this), &QShortcut::activated, this, &QWidget::close);
        }
    }
}

QString SettingsWindow::showPage(const QString &name)
{
    return m_pane->showPage(name) ? QString()
                                  : QStringLiteral("there is no page \"%1\"; the pages are %2")
                                        .arg(name, m_pane->pages().join(QStringLiteral(", ")));
}

void SettingsWindow::paintEvent(QPaintEvent *event)
{
    QMainWindow::paintEvent(event);
    if (!m_painted) {
        m_painted = true;
        // Looking through the icon themes takes as long as all the rest of the opening.
        QTimer::singleShot(
            0, this, [this] { setWindowIcon(QIcon::fromTheme(QStringLiteral("input-keyboard"))); });
    }
}

bool SettingsWindow::saveScreenshot(const QString &path)
{
    return centralWidget()->grab().save(path, "PNG");
}
