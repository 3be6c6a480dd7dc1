// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/ApplicationPanel/ApplicationFileDialog.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationListView.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Tests/Platform/Core/Applications/ApplicationFixture.h"

#include <QLineEdit>
#include <QPushButton>

namespace test {

// A panel on a window, with what it has answered.
struct OpenedPanel {
    explicit OpenedPanel(const QString &folder = {})
    {
        window.resize(400, 300);
        window.show();
        panel.setFolder(folder);
        panel.setWindowTitle(QStringLiteral("Choose one"));
        begin();
    }

    void begin()
    {
        panel.begin(&window, [this](int code, const QString &path) {
            codes << code;
            paths << path;
            wasHidden = panel.isHidden();
        });
    }

    template <typename Widget>
    Widget *child(const char *name) const
    {
        return panel.findChild<Widget *>(QLatin1String(name));
    }
    platform::ApplicationListView *list() const
    {
        return child<platform::ApplicationListView>("applicationList");
    }
    QLineEdit *search() const { return child<QLineEdit>("applicationSearch"); }
    QPushButton *button(const char *name) const { return child<QPushButton>(name); }
    platform::ApplicationFileDialog *files() const
    {
        return child<platform::ApplicationFileDialog>("applicationFileDialog");
    }

    QStringList names() const
    {
        QStringList all;
        for (int i = 0; i < list()->model()->rowCount(); ++i) {
            all << list()->model()->index(i, 0).data().toString();
        }
        return all;
    }
    QString current() const
    {
        const auto rows = list()->selectionModel()->selectedIndexes();
        return rows.isEmpty() ? QString() : rows.constFirst().data().toString();
    }

    QWidget window;
    platform::ApplicationPanel panel;
    QList<int> codes;
    QStringList paths;
    bool wasHidden = false;
};

inline QStringList texts(std::initializer_list<const char *> each)
{
    QStringList all;
    for (const auto *text : each) {
        all << QString::fromUtf8(text);
    }
    return all;
}

} // namespace test
