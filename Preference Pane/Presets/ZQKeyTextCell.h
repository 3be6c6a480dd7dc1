// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Shortcut/ZQShortcutKeyFieldEditor.h"

#include <QPointer>
#include <QStyledItemDelegate>

// A text cell that is edited through an editor of its own, which captures key presses.
class ZQKeyTextCell : public QStyledItemDelegate {
    Q_OBJECT
public:
    /// init
    explicit ZQKeyTextCell(QObject *parent = nullptr);
    /// initTextCell:
    explicit ZQKeyTextCell(QString text, QObject *parent = nullptr);
    ~ZQKeyTextCell() override;

    ZQShortcutKeyFieldEditor *zqFieldEditor() const { return m_zqFieldEditor; }
    const QString &stringValue() const { return m_stringValue; }

    /// setUpFieldEditorAttributes:
    /// The cell's own editor, whatever is offered.
    QWidget *setUpFieldEditorAttributes(QWidget *offered) const;

    // Reads from the left everywhere: "Ctrl+,", not ",+Ctrl".
    QString displayText(const QVariant &value, const QLocale &locale) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;

protected:
    bool eventFilter(QObject *editor, QEvent *event) override;

private:
    // Null once a view was destroyed while it was in use there.
    QPointer<ZQShortcutKeyFieldEditor> m_zqFieldEditor;
    QString m_stringValue;
};
