// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

// A system-wide job file. A file is loaded only if root has made it, in a folder that only root can
// change, with the requested contents. Whoever has a file open for writing can still write to it
// after its owner has changed. What is done here may ask for the authorisation.
class RootsJobFile {
public:
    RootsJobFile(QString path, QByteArray contents);

    // Why others than root could put something else in the file's place, now or later; null where
    // nobody could. Root's tools follow paths, so they must not be used there.
    static QString folderObjection(const QString &folder);

    // Has root put a new file with the contents in place of what is at the path, at once. Nobody
    // else has ever had the new file open for writing. False when something else is there then.
    bool replace() const;

    // Whether root's file of mode 644 with the contents is there and nothing else has its inode.
    // Waits for owner and mode: what sets them may only have been started.
    bool isInPlace() const;

    // Gives the file itself the mode 644: no link is followed, and no file that has another name.
    void setModeOfFileOnly() const;

    // Has root remove what is at the path.
    void remove() const;

private:
    QString m_path;
    QByteArray m_contents;
};
