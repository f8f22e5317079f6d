#include "ui/live/ProcessList.h"

#include "ui/components/Icons.h"
#include "ui/components/Label.h"
#include "ui/components/Theme.h"
#include "ui/live/ProcessTableView.h"

#include <QActionGroup>
#include <QVBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QStackedWidget>
#include <QToolButton>

namespace tallowmere {

namespace {

QToolButton* makeSortButton(const Theme& theme, QMenu* menu, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(QStringLiteral("sortBy"));
    button->setText(QStringLiteral("Sort by"));
    button->setAccessibleName(QStringLiteral("Sort by"));
    button->setIcon(Icons::tintedIcon(QStringLiteral("chevron.down"), theme.colors.secondaryText, 10));
    button->setIconSize(QSize(10, 10));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setLayoutDirection(Qt::RightToLeft);  // the chevron after the words
    button->setPopupMode(QToolButton::InstantPopup);
    button->setCursor(Qt::PointingHandCursor);
    button->setFont(Theme::font(9.5, QFont::Medium));
    button->setMenu(menu);
    button->setStyleSheet(QStringLiteral("QToolButton { background: %1; color: %2; border: none; border-radius: %3px;"
                                         " padding: 3px 8px; }"
                                         "QToolButton:hover { background: %4; }"
                                         "QToolButton::menu-indicator { image: none; width: 0; }")
                              .arg(theme.colors.track.name(QColor::HexArgb), theme.colors.text.name(QColor::HexArgb))
                              .arg(theme.radii.control)
                              .arg(theme.colors.cardHover.name(QColor::HexArgb)));
    return button;
}

QAction* addChoice(QMenu* menu, QActionGroup* group, const QString& label, int value)
{
    QAction* action = menu->addAction(label);
    action->setCheckable(true);
    action->setData(value);
    group->addAction(action);
    return action;
}

} // namespace

ProcessList::ProcessList(const Theme& theme, QColor accent, ProcessTableLayout layout, QList<SortChoice> choices,
                         int visibleRows, QWidget* parent)
    : QWidget(parent)
    , model_(new ProcessTableModel(std::move(layout)))
    , view_(new ProcessTableView(theme, accent, model_))
    , empty_(makeLabel({}, Theme::font(10.5), theme.colors.secondaryText))
    , stack_(new QStackedWidget(this))
    , menu_(new QMenu(this))
    , sortButton_(makeSortButton(theme, menu_, this))
    , fields_(new QActionGroup(this))
    , orders_(new QActionGroup(this))
{
    setObjectName(QStringLiteral("processList"));
    for (const SortChoice& choice : choices)
        addChoice(menu_, fields_, choice.label, choice.column);
    menu_->addSeparator();
    addChoice(menu_, orders_, QStringLiteral("Ascending"), Qt::AscendingOrder);
    addChoice(menu_, orders_, QStringLiteral("Descending"), Qt::DescendingOrder);
    connect(fields_, &QActionGroup::triggered, this,
            [this](QAction* a) { model_->sort(a->data().toInt(), model_->sortOrder()); });
    connect(orders_, &QActionGroup::triggered, this,
            [this](QAction* a) { model_->sort(model_->sortColumn(), Qt::SortOrder(a->data().toInt())); });
    connect(model_, &ProcessTableModel::sortChanged, this, &ProcessList::showSort);
    showSort(model_->sortColumn(), model_->sortOrder());

    view_->setVisibleRows(visibleRows);
    empty_->setObjectName(QStringLiteral("processListEmpty"));
    empty_->setAlignment(Qt::AlignCenter);
    stack_->addWidget(view_);
    stack_->addWidget(empty_);
    // The same height with or without rows, so the page does not jump when the first list comes.
    stack_->setFixedHeight(view_->height());

    auto* layoutBox = new QVBoxLayout(this);
    layoutBox->setContentsMargins(0, 0, 0, 0);
    layoutBox->setSpacing(theme.spacing.small);
    layoutBox->addWidget(stack_);

    connect(model_, &QAbstractItemModel::rowsInserted, this, &ProcessList::showEmptyOrTable);
    connect(model_, &QAbstractItemModel::rowsRemoved, this, &ProcessList::showEmptyOrTable);
    showEmptyOrTable();
}

void ProcessList::setRows(QList<ProcessTableRow> rows)
{
    model_->setRows(std::move(rows));
}

void ProcessList::setEmptyText(const QString& text)
{
    empty_->setText(text);
}

bool ProcessList::showsEmptyText() const
{
    return stack_->currentWidget() == empty_;
}

QString ProcessList::emptyText() const
{
    return empty_->text();
}

void ProcessList::showSort(int column, Qt::SortOrder order)
{
    for (QAction* a : fields_->actions())
        a->setChecked(a->data().toInt() == column);
    for (QAction* a : orders_->actions())
        a->setChecked(a->data().toInt() == order);
}

void ProcessList::showEmptyOrTable()
{
    stack_->setCurrentWidget(model_->rowCount() == 0 ? static_cast<QWidget*>(empty_) : view_);
}

} // namespace tallowmere
