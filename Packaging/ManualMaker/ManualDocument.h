// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QTextDocument>

#include <utility>

class QPaintDevice;

// A text in Markdown, set for paper: headings, tables, code, and pictures from a folder.
class ManualDocument : public QTextDocument {
    Q_OBJECT
public:
    explicit ManualDocument(QString pictureFolder) : m_pictureFolder(std::move(pictureFolder)) {}

    // Takes the text. Returns null, or a message: the text has no title, or one of its pictures
    // cannot be read.
    QString take(const QString &markdown);

    // The text's first heading.
    QString title() const { return metaInformation(DocumentTitle); }

    // Sets the text in columns of this size, in the device's pixels. Headings stay with what
    // follows them, and tables, pictures and code stay whole where a page has room for them.
    void layOut(QPaintDevice *device, QSizeF size);

protected:
    QVariant loadResource(int type, const QUrl &name) override;

private:
    QString m_pictureFolder;
    QString m_error;
};
