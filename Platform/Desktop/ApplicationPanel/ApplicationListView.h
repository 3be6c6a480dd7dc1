// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QListView>

namespace platform {

// A list of applications (ApplicationListModel): icon, name and what it is. Where there are none it
// says why.
class ApplicationListView : public QListView {
    Q_OBJECT
public:
    explicit ApplicationListView(QWidget *parent);

    void setPlaceholder(const QString &text);

Q_SIGNALS:
    // Text typed into the list, which belongs in the search field.
    void typed(const QString &text);
    // Up from the first row.
    void leftAtTop();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_placeholder;
};

} // namespace platform
