#include "ui/live/ProcessTableView.h"

#include "ui/components/Icons.h"
#include "ui/components/Theme.h"
#include "ui/live/ProcessTableModel.h"

#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace tallowmere {

namespace {

// Paints every cell itself: the style's item painting is the slow part of a 1,000-row table
// and would not match the cards anyway.
class ProcessRowDelegate : public QStyledItemDelegate {
public:
    ProcessRowDelegate(const Theme& theme, QColor accent, QObject* parent)
        : QStyledItemDelegate(parent)
        , theme_(theme)
        , accent_(accent)
        , nameFont_(Theme::font(10.5, QFont::Medium))
        , detailFont_(Theme::font(8.5))
        , figureFont_(Theme::font(10))
        , badgeFont_(Theme::font(8, QFont::DemiBold))
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QRect r = option.rect;
        if (option.state & QStyle::State_Selected)
            painter->fillRect(r, Theme::withOpacity(accent_, 0.22));
        painter->fillRect(QRect(r.left(), r.bottom(), r.width(), 1), theme_.colors.separator);

        const QRect inner = r.adjusted(8, 0, -8, 0);
        if (index.column() != ProcessTableModel::nameColumn) {
            painter->setFont(figureFont_);
            painter->setPen(theme_.colors.text);
            painter->drawText(inner, Qt::AlignRight | Qt::AlignVCenter, index.data().toString());
            return;
        }
        paintName(painter, inner, index);
    }

private:
    void paintName(QPainter* painter, QRect inner, const QModelIndex& index) const
    {
        const QString detail = index.data(ProcessTableModel::DetailRole).toString();
        const QString badge = index.data(ProcessTableModel::BadgeRole).toString();
        const QFontMetrics nameMetrics(nameFont_);
        QRect nameRect = inner;
        if (!detail.isEmpty())
            nameRect.setBottom(inner.center().y() + 1);
        if (!badge.isEmpty())
            nameRect.setRight(nameRect.right() - badgeWidth(badge) - 6);
        const QString name = nameMetrics.elidedText(index.data().toString(), Qt::ElideRight, nameRect.width());
        painter->setFont(nameFont_);
        painter->setPen(theme_.colors.text);
        painter->drawText(nameRect, Qt::AlignLeft | (detail.isEmpty() ? Qt::AlignVCenter : Qt::AlignBottom), name);
        if (!badge.isEmpty())
            paintBadge(painter, badge, nameRect.left() + nameMetrics.horizontalAdvance(name) + 6, nameRect);
        if (!detail.isEmpty()) {
            painter->setFont(detailFont_);
            painter->setPen(theme_.colors.secondaryText);
            painter->drawText(inner.adjusted(0, inner.height() / 2 + 2, 0, 0), Qt::AlignLeft | Qt::AlignTop, detail);
        }
    }

    int badgeWidth(const QString& badge) const { return QFontMetrics(badgeFont_).horizontalAdvance(badge) + 10; }

    void paintBadge(QPainter* painter, const QString& badge, int x, const QRect& line) const
    {
        const int height = QFontMetrics(badgeFont_).height() + 2;
        const QRectF chip(x, line.center().y() - height / 2.0, badgeWidth(badge), height);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(Theme::withOpacity(accent_, 0.22));
        painter->drawRoundedRect(chip, height / 2.0, height / 2.0);
        painter->setFont(badgeFont_);
        painter->setPen(theme_.colors.text);
        painter->drawText(chip, Qt::AlignCenter, badge);
        painter->restore();
    }

    const Theme& theme_;
    QColor accent_;
    QFont nameFont_;
    QFont detailFont_;
    QFont figureFont_;
    QFont badgeFont_;
};

// Column titles in the quiet caption style, the sorted one in the accent with its direction.
class ProcessTableHeader : public QHeaderView {
public:
    ProcessTableHeader(const Theme& theme, QColor accent, QWidget* parent)
        : QHeaderView(Qt::Horizontal, parent)
        , theme_(theme)
        , accent_(accent)
    {
        setFont(Theme::font(9, QFont::DemiBold));
        setSectionsClickable(true);
        setSortIndicatorShown(true);
        setHighlightSections(false);
        setFixedHeight(ProcessTableView::headerHeight);
    }

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override
    {
        painter->fillRect(rect, theme_.colors.card);
        painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), theme_.colors.separator);
        const bool sorted = sortIndicatorSection() == section;
        const auto alignment = Qt::Alignment(model()->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole).toInt());
        const QString title = model()->headerData(section, Qt::Horizontal).toString();
        const QRect text = rect.adjusted(8, 0, -8, 0);
        if (sorted) {
            // The direction sits on the inner side of the title, so titles stay over their figures.
            constexpr int chevron = 10;
            const int width = QFontMetrics(font()).horizontalAdvance(title);
            const int x = (alignment & Qt::AlignRight) ? text.right() - width - 4 - chevron : text.left() + width + 4;
            const QString symbol = sortIndicatorOrder() == Qt::AscendingOrder ? QStringLiteral("chevron.up")
                                                                              : QStringLiteral("chevron.down");
            painter->drawPixmap(QRect(x, rect.center().y() - chevron / 2, chevron, chevron),
                                Icons::tinted(symbol, accent_, chevron, devicePixelRatioF()));
        }
        painter->setFont(font());
        painter->setPen(sorted ? accent_ : theme_.colors.secondaryText);
        painter->drawText(text, int(alignment), title);
    }

private:
    const Theme& theme_;
    QColor accent_;
};

} // namespace

ProcessTableView::ProcessTableView(const Theme& theme, QColor accent, ProcessTableModel* model, QWidget* parent)
    : QTableView(parent)
{
    setObjectName(QStringLiteral("processTable"));
    setHorizontalHeader(new ProcessTableHeader(theme, accent, this));
    setItemDelegate(new ProcessRowDelegate(theme, accent, this));
    setModel(model);
    model->setParent(this);

    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(rowHeight);
    horizontalHeader()->setSectionResizeMode(ProcessTableModel::nameColumn, QHeaderView::Stretch);
    horizontalHeader()->setSortIndicator(model->sortColumn(), model->sortOrder());
    setSortingEnabled(true);
    connect(model, &ProcessTableModel::sortChanged, this,
            [this](int column, Qt::SortOrder order) { horizontalHeader()->setSortIndicator(column, order); });

    setShowGrid(false);
    setFrameShape(QFrame::NoFrame);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setWordWrap(false);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(QStringLiteral("Processes"));

    QPalette p = palette();
    p.setColor(QPalette::Base, theme.colors.card);
    p.setColor(QPalette::Window, theme.colors.card);
    p.setColor(QPalette::Text, theme.colors.text);
    // The delegate paints the selection itself, softer than the style's highlight.
    p.setColor(QPalette::Highlight, Qt::transparent);
    setPalette(p);
    verticalScrollBar()->setStyleSheet(
        QStringLiteral("QScrollBar:vertical { background: transparent; width: 8px; margin: 0; }"
                       "QScrollBar::handle:vertical { background: %1; border-radius: 4px; min-height: 24px; }"
                       "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
                       "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }")
            .arg(theme.colors.track.name(QColor::HexArgb)));
}

void ProcessTableView::setFigureWidths(int first, int second)
{
    horizontalHeader()->setSectionResizeMode(1, QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(2, QHeaderView::Fixed);
    horizontalHeader()->resizeSection(1, first);
    horizontalHeader()->resizeSection(2, second);
}

void ProcessTableView::setVisibleRows(int rows)
{
    setFixedHeight(headerHeight + rows * rowHeight + 2 * frameWidth());
}

} // namespace tallowmere
