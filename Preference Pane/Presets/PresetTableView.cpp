// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/PresetTableView.h"

#include <QDrag>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QUrl>

namespace {

QStringList localFiles(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile()) {
            paths.append(url.toLocalFile());
        }
    }
    return paths;
}

} // namespace

PresetTableView::PresetTableView(QWidget *parent) : TableView(parent)
{
    constexpr int iconSide = 16; // points
    setIconSize({iconSide, iconSide});
    setAcceptDrops(true);
    setDragEnabled(true);
    setDragDropMode(DragDrop);
    setDropIndicatorShown(false);
}

void PresetTableView::dragEnterEvent(QDragEnterEvent *event)
{
    dragMoveEvent(event);
}

void PresetTableView::dragMoveEvent(QDragMoveEvent *event)
{
    const bool isAccepted = event->source() != this && !localFiles(*event->mimeData()).isEmpty() &&
                            event->possibleActions().testFlag(Qt::CopyAction);
    if (isAccepted) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void PresetTableView::dropEvent(QDropEvent *event)
{
    const QStringList paths = localFiles(*event->mimeData());
    if (event->source() == this || paths.isEmpty()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // Queued: the program that drags waits for the end of this event, and must not wait for alerts.
    QMetaObject::invokeMethod(
        this, [this, paths] { Q_EMIT filesDropped(paths); }, Qt::QueuedConnection);
}

void PresetTableView::startDrag(Qt::DropActions /*actions*/)
{
    const QString path = m_file ? m_file() : QString();
    if (path.isNull()) {
        return;
    }
    auto *contents = new QMimeData;
    contents->setUrls({QUrl::fromLocalFile(path)});
    auto *drag = new QDrag(this);
    drag->setMimeData(contents);
    drag->exec(Qt::CopyAction);
}

void PresetTableView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Delete)) {
        event->accept();
        Q_EMIT removeRequested();
    } else {
        TableView::keyPressEvent(event);
    }
}
