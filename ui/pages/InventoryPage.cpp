#include "ui/pages/InventoryPage.h"

#include "ui/components/Label.h"
#include "ui/components/Card.h"
#include "ui/components/Icons.h"
#include "ui/components/InfoRow.h"
#include "ui/components/StorageBar.h"
#include "ui/components/Theme.h"
#include "ui/components/Tile.h"

#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>

namespace tallowmere {

QWidget* makePageHeader(const Theme& theme, const QString& icon, const QColor& accent, const QString& title,
                        const QString& subtitle, QWidget* parent)
{
    auto* header = new QWidget(parent);
    header->setObjectName(QStringLiteral("pageHeader"));
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, theme.spacing.small);
    layout->setSpacing(theme.spacing.large);
    auto* iconLabel = new QLabel(header);
    iconLabel->setPixmap(Icons::tinted(icon, accent, 34, header->devicePixelRatioF()));
    layout->addWidget(iconLabel, 0, Qt::AlignTop);
    auto* titles = new QVBoxLayout;
    titles->setSpacing(2);
    QLabel* titleLabel = makeLabel(title, Theme::font(20, QFont::Bold), theme.colors.text, header);
    titleLabel->setObjectName(QStringLiteral("pageTitle"));
    titles->addWidget(titleLabel);
    if (!subtitle.isEmpty()) {
        QLabel* sub = makeLabel(subtitle, Theme::font(11), theme.colors.secondaryText, header);
        sub->setObjectName(QStringLiteral("pageSubtitle"));
        sub->setTextInteractionFlags(Qt::TextSelectableByMouse);
        titles->addWidget(sub);
    }
    layout->addLayout(titles, 1);
    return header;
}

QWidget* makeScrollingPage(const Theme& theme, QWidget* content, QWidget* parent)
{
    auto* scroll = new QScrollArea(parent);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QPalette palette = scroll->palette();
    palette.setColor(QPalette::Window, theme.colors.window);
    scroll->setPalette(palette);
    scroll->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    scroll->setWidget(content);
    return scroll;
}

InventoryPage::InventoryPage(const Theme& theme, PageRecord record, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , record_(std::move(record))
    , accent_(categoryAccent(record_.category, theme))
    , inventoryLayout_(new QVBoxLayout)
    , liveLayout_(new QVBoxLayout)
{
    setObjectName(QStringLiteral("page:") + record_.title);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    const int margin = theme.spacing.section + 10;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(theme.spacing.section);
    layout->addLayout(inventoryLayout_);
    auto* live = new QWidget(content);
    live->setObjectName(QStringLiteral("liveCards"));
    live->setLayout(liveLayout_);
    liveLayout_->setContentsMargins(0, 0, 0, 0);
    liveLayout_->setSpacing(theme.spacing.section);
    layout->addWidget(live);
    layout->addStretch(1);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(makeScrollingPage(theme, content, this));
    build();
}

void InventoryPage::setRecord(PageRecord record)
{
    if (record == record_)
        return;
    record_ = std::move(record);
    build();
}

void InventoryPage::build()
{
    delete inventory_;
    inventory_ = new QWidget;
    auto* layout = new QVBoxLayout(inventory_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(theme_.spacing.section);
    layout->addWidget(makeHeader());
    if (!record_.tiles.isEmpty())
        layout->addWidget(makeTiles());

    // Cards two to a row; a lone last card takes the whole width.
    auto* grid = new QGridLayout;
    grid->setSpacing(theme_.spacing.section);
    const auto count = record_.cards.size();
    for (qsizetype i = 0; i < count; ++i) {
        const bool wide = count == 1 || (i == count - 1 && count % 2 == 1);
        grid->addWidget(makeCard(record_.cards[i]), static_cast<int>(i / 2), static_cast<int>(i % 2), 1, wide ? 2 : 1,
                        Qt::AlignTop);
    }
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);
    inventoryLayout_->addWidget(inventory_);
}

QWidget* InventoryPage::makeHeader()
{
    return makePageHeader(theme_, categoryIcon(record_.category), accent_, record_.title, record_.subtitle, inventory_);
}

QWidget* InventoryPage::makeTiles()
{
    auto* row = new QWidget(inventory_);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(theme_.spacing.section);
    for (const TileRecord& record : record_.tiles) {
        auto* tile = new Tile(theme_, record.icon, accent_, row);
        tile->setTexts(record.title, record.value, record.subtitle);
        layout->addWidget(tile, 1);
    }
    // A single tile keeps its natural width instead of spanning the page.
    if (record_.tiles.size() < 3)
        layout->addStretch(record_.tiles.size() == 1 ? 2 : 1);
    return row;
}

QWidget* InventoryPage::makeCard(const CardRecord& record)
{
    auto* card = new Card(theme_, record.title, record.icon, accent_, inventory_);
    if (record.caption)
        card->setCaption(*record.caption);
    for (const RowRecord& row : record.rows)
        card->body()->addWidget(new InfoRow(theme_, row.label, row.value, row.mono, row.revealable, card));
    if (record.usedFraction) {
        auto* bar = new StorageBar(theme_, accent_, card);
        bar->setUsedFraction(*record.usedFraction);
        card->body()->addSpacing(theme_.spacing.small);
        card->body()->addWidget(bar);
        card->body()->addWidget(makeLabel(record.barCaption, Theme::font(9.5), theme_.colors.secondaryText, card));
    }
    for (const ItemRecord& item : record.items)
        card->body()->addWidget(makeItem(item, card));
    if (record.empty)
        card->body()->addWidget(makeEmptyState(theme_, record.empty->icon, record.empty->message, card));
    return card;
}

QWidget* InventoryPage::makeItem(const ItemRecord& item, QWidget* parent)
{
    auto* box = new QWidget(parent);
    box->setObjectName(QStringLiteral("item:") + item.name);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, theme_.spacing.tight, 0, theme_.spacing.tight);
    layout->setSpacing(theme_.spacing.tight);
    auto* head = new QHBoxLayout;
    head->setSpacing(theme_.spacing.medium);
    auto* icon = new QLabel(box);
    icon->setPixmap(Icons::tinted(item.icon, accent_, 16, box->devicePixelRatioF()));
    head->addWidget(icon);
    QLabel* name = makeLabel(item.name, Theme::font(10.5, QFont::Medium), theme_.colors.text, box);
    name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    name->setWordWrap(true);
    head->addWidget(name, 1);
    layout->addLayout(head);
    for (const RowRecord& row : item.rows) {
        auto* line = new InfoRow(theme_, row.label, row.value, row.mono, row.revealable, box);
        line->setContentsMargins(26, 0, 0, 0);
        layout->addWidget(line);
    }
    if (item.usedFraction) {
        auto* bar = new StorageBar(theme_, accent_, box);
        bar->setUsedFraction(*item.usedFraction);
        layout->addWidget(bar);
    }
    if (!item.captions.isEmpty()) {
        auto* captions = new QHBoxLayout;
        for (qsizetype i = 0; i < item.captions.size(); ++i) {
            if (i > 0)
                captions->addStretch(1);
            captions->addWidget(makeLabel(item.captions[i], Theme::font(9.5), theme_.colors.secondaryText, box));
        }
        layout->addLayout(captions);
    }
    return box;
}

} // namespace tallowmere
