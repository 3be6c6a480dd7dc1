// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QFileDialog>

namespace platform {

// Lets a person pick an application among the files: an ".app" folder, which here is one file and
// cannot be entered, or a ".desktop" file. It makes, renames and deletes nothing. It is never the
// desktop's own dialog, which would enter the folder.
class ApplicationFileDialog : public QFileDialog {
    Q_OBJECT
public:
    ApplicationFileDialog(QWidget *parent, const QString &folder);

    void accept() override;

Q_SIGNALS:
    // When the dialog is hidden already.
    void chosen(const QString &path);

private:
    void choose(const QString &path);
};

} // namespace platform
