// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualDocument.h"

#include "Packaging/ManualMaker/ManualStyle.h"
#include "Packaging/ManualMaker/PageBreaks.h"

#include <QAbstractTextDocumentLayout>
#include <QImageReader>
#include <QPaintDevice>
#include <QTextBlock>
#include <QTextCursor>
#include <QUrl>

#include <utility>

namespace {

// Comments at the beginning of a file are for those who write it.
QString withoutComments(const QString &markdown)
{
    QString text = markdown.trimmed();
    while (text.startsWith(QLatin1String("<!--"))) {
        const auto end = text.indexOf(QLatin1String("-->"));
        text = end < 0 ? QString() : text.mid(end + 3).trimmed();
    }
    return text;
}

} // namespace

ManualDocument::ManualDocument(QString pictureFolder) : m_pictureFolder(std::move(pictureFolder))
{
    setDocumentMargin(0);
    setDefaultFont(manualStyle::bodyFont());
}

QString ManualDocument::take(const QString &markdown)
{
    m_error = QString();
    setMarkdown(withoutComments(markdown), MarkdownDialectGitHub);
    const auto first = begin();
    if (first.blockFormat().headingLevel() != 1) {
        return QStringLiteral("it does not begin with its title, a heading of the first level");
    }
    m_title = first.text();
    setMetaInformation(DocumentTitle, m_title);
    manualStyle::apply(*this);
    // Asks for each picture.
    limitPictures(0);
    return m_error;
}

QVariant ManualDocument::loadResource(int type, const QUrl &name)
{
    if (type != ImageResource) {
        return QTextDocument::loadResource(type, name);
    }
    const QString path = m_pictureFolder + QLatin1Char('/') + name.toString();
    QImageReader reader(path);
    QImage picture = reader.read();
    if (picture.isNull() && m_error.isNull()) {
        m_error =
            QStringLiteral("the picture %1 cannot be read: %2").arg(path, reader.errorString());
    }
    return picture;
}

// Gives each picture its size on paper: half a pixel of a window at scale 1 for each of the
// picture's, which is taken at scale 2, and no more than the width.
void ManualDocument::limitPictures(qreal width)
{
    for (auto block = begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            auto format = part.fragment().charFormat().toImageFormat();
            if (!format.isValid()) {
                continue;
            }
            const auto picture = resource(ImageResource, QUrl(format.name())).value<QImage>();
            if (picture.isNull() || width <= 0) {
                continue;
            }
            const qreal shown = qMin(width, picture.width() * manualStyle::pictureScale);
            format.setWidth(shown);
            format.setHeight(shown * picture.height() / picture.width());
            QTextCursor cursor(this);
            cursor.setPosition(part.fragment().position());
            cursor.setPosition(part.fragment().position() + part.fragment().length(),
                               QTextCursor::KeepAnchor);
            cursor.setCharFormat(format);
            break; // one to a paragraph; the parts of it are new ones now
        }
    }
}

void ManualDocument::layOut(QPaintDevice *device, QSizeF size)
{
    documentLayout()->setPaintDevice(device);
    limitPictures(size.width() / device->logicalDpiX() * manualStyle::distancesPerInch);
    setPageSize(size);
    pageBreaks::improve(*this);
}
