// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/ApplicationListView.h"

#include "Platform/Desktop/ApplicationPanel/ApplicationListModel.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>

namespace platform {
namespace {

constexpr int iconSide = 32;
constexpr int margin = 6;
constexpr int dimmed = 180; // opacity, of 255, of what is said in passing

class ApplicationDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex & /*index*/) const override
    {
        const auto texts = option.fontMetrics.height() + small(option.font).height();
        return {iconSide * 4, std::max(iconSide, texts) + 2 * margin};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        auto item = option;
        initStyleOption(&item, index);
        const auto icon =
            item.icon.isNull()
                ? QIcon::fromTheme(QStringLiteral("application-x-executable"), QIcon())
                : item.icon;
        item.icon = QIcon();
        item.text.clear();
        const auto *style = item.widget->style();
        style->drawPrimitive(QStyle::PE_PanelItemViewItem, &item, painter, item.widget);

        const auto isSelected = item.state.testFlag(QStyle::State_Selected);
        const auto isActive = item.state.testFlag(QStyle::State_Active);
        const auto mirrored = [&](const QRect &rect) {
            return QStyle::visualRect(item.direction, item.rect, rect);
        };
        const auto inside = item.rect.adjusted(2 * margin, margin, -2 * margin, -margin);
        QRect square(0, 0, iconSide, iconSide);
        square.moveTopLeft({inside.left(), inside.center().y() - iconSide / 2});
        // Not in the look of selected icons, which some styles tint beyond recognition.
        icon.paint(painter, mirrored(square));

        const auto group = isActive ? QPalette::Active : QPalette::Inactive;
        auto colour =
            item.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
        auto texts = inside.adjusted(iconSide + 2 * margin, 0, 0, 0);
        const auto description = index.data(ApplicationListModel::DescriptionRole).toString();
        const auto name = index.data(Qt::DisplayRole).toString();
        const auto above = item.fontMetrics.height();
        const auto below = description.isEmpty() ? 0 : small(item.font).height();
        texts.setTop(inside.center().y() - (above + below) / 2);
        drawLine(*painter, item, mirrored({texts.left(), texts.top(), texts.width(), above}), name,
                 item.font, colour);
        colour.setAlpha(isSelected ? 255 : dimmed);
        drawLine(*painter, item,
                 mirrored({texts.left(), texts.top() + above, texts.width(), below}), description,
                 smallFont(item.font), colour);
    }

private:
    static QFont smallFont(QFont font)
    {
        if (font.pointSizeF() > 0) {
            font.setPointSizeF(font.pointSizeF() * 0.9);
        }
        return font;
    }

    static QFontMetrics small(const QFont &font) { return QFontMetrics(smallFont(font)); }

    static void drawLine(QPainter &painter, const QStyleOptionViewItem &item, const QRect &rect,
                         const QString &text, const QFont &font, const QColor &colour)
    {
        painter.save();
        painter.setFont(font);
        painter.setPen(colour);
        const auto line = QFontMetrics(font).elidedText(text, Qt::ElideRight, rect.width());
        const auto side = QStyle::visualAlignment(item.direction, Qt::AlignLeft | Qt::AlignVCenter);
        painter.drawText(rect, static_cast<int>(side) | Qt::TextSingleLine, line);
        painter.restore();
    }
};

} // namespace

ApplicationListView::ApplicationListView(QWidget *parent) : QListView(parent)
{
    setItemDelegate(new ApplicationDelegate(this));
    setUniformItemSizes(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void ApplicationListView::setPlaceholder(const QString &text)
{
    m_placeholder = text;
    setAccessibleDescription(text);
    viewport()->update();
}

void ApplicationListView::keyPressEvent(QKeyEvent *event)
{
    const auto command = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const auto text = event->text();
    const auto isTyped =
        !text.isEmpty() && text.at(0).isPrint() && (event->modifiers() & command) == 0;
    if (event->key() == Qt::Key_Up && currentIndex().row() <= 0) {
        Q_EMIT leftAtTop();
    } else if (isTyped || event->key() == Qt::Key_Backspace) {
        Q_EMIT typed(isTyped ? text : QString());
    } else {
        QListView::keyPressEvent(event);
    }
}

void ApplicationListView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (model() == nullptr || model()->rowCount() > 0 || m_placeholder.isEmpty()) {
        return;
    }
    QPainter painter(viewport());
    auto colour = palette().color(QPalette::Text);
    colour.setAlpha(dimmed);
    painter.setPen(colour);
    const auto room = viewport()->rect().adjusted(margin, margin, -margin, -margin);
    painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
}

} // namespace platform
