// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyTextCell.h"

#include "Preference Pane/Shortcut/ZQShortcutKeyFieldEditor.h"

#include <QEvent>

ZQKeyTextCell::ZQKeyTextCell(QObject *parent) : ZQKeyTextCell(QString(), parent) {}

ZQKeyTextCell::ZQKeyTextCell(QString text, QObject *parent)
    : QStyledItemDelegate(parent), m_zqFieldEditor(new ZQShortcutKeyFieldEditor),
      m_stringValue(std::move(text))
{
}

ZQKeyTextCell::~ZQKeyTextCell()
{
    if (m_zqFieldEditor != nullptr) {
        // A view that edits with it hears that it is gone, and must not ask us for anything then.
        m_zqFieldEditor->removeEventFilter(this);
        delete m_zqFieldEditor;
    }
}

QWidget *ZQKeyTextCell::setUpFieldEditorAttributes(QWidget * /*offered*/) const
{
    return m_zqFieldEditor;
}

QString ZQKeyTextCell::displayText(const QVariant &value, const QLocale &locale) const
{
    constexpr QChar leftToRightIsolate(0x2066);
    constexpr QChar popDirectionalIsolate(0x2069);
    return leftToRightIsolate + QStyledItemDelegate::displayText(value, locale) +
           popDirectionalIsolate;
}

QWidget *ZQKeyTextCell::createEditor(QWidget *parent, const QStyleOptionViewItem & /*option*/,
                                     const QModelIndex & /*index*/) const
{
    QWidget *editor = setUpFieldEditorAttributes(nullptr);
    if (editor != nullptr) {
        editor->setParent(parent);
    }
    return editor;
}

void ZQKeyTextCell::destroyEditor(QWidget *editor, const QModelIndex & /*index*/) const
{
    // It stays the cell's own.
    editor->hide();
    editor->setParent(nullptr);
}

void ZQKeyTextCell::setEditorData(QWidget * /*editor*/, const QModelIndex & /*index*/) const {}

void ZQKeyTextCell::setModelData(QWidget * /*editor*/, QAbstractItemModel * /*model*/,
                                 const QModelIndex & /*index*/) const
{
}

bool ZQKeyTextCell::eventFilter(QObject *editor, QEvent *event)
{
    // The base ends the editing at Esc, Tab and Enter.
    const bool isKey =
        event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    return !isKey && QStyledItemDelegate::eventFilter(editor, event);
}
