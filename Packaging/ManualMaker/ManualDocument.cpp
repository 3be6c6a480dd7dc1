// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualDocument.h"

#include "Packaging/ManualMaker/ManualStyle.h"
#include "Packaging/ManualMaker/PageBreaks.h"

#include <QAbstractTextDocumentLayout>
#include <QImageReader>
#include <QTextBlock>
#include <QUrl>

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

QString ManualDocument::take(const QString &markdown)
{
    setMarkdown(withoutComments(markdown), MarkdownDialectGitHub);
    const auto first = begin();
    if (first.blockFormat().headingLevel() != 1) {
        return QStringLiteral("it does not begin with its title, a heading of the first level");
    }
    setMetaInformation(DocumentTitle, first.text());
    manualStyle::apply(*this);
    documentLayout()->documentSize(); // asks for each picture
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
    // Windows are shown a little smaller than on a screen, because paper is held nearer.
    constexpr qreal pixelsPerDistance = 2 / 0.8;
    constexpr qreal distancesPerMillimetre = 96 / 25.4;
    picture.setDevicePixelRatio(qMax(
        pixelsPerDistance, picture.width() / (manualStyle::textWidth * distancesPerMillimetre)));
    return picture;
}

void ManualDocument::layOut(QPaintDevice *device, QSizeF size)
{
    documentLayout()->setPaintDevice(device);
    setPageSize(size);
    pageBreaks::improve(*this);
}
