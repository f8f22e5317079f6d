#pragma once

#include "ui/pages/PageRecord.h"

#include <QWidget>

class QVBoxLayout;

namespace tallowmere {

struct Theme;

// One inventory page: a header, its tiles and cards, painted from a PageRecord, and below them
// the area the page's live cards fill. Built again only when the record changes (Refresh).
class InventoryPage : public QWidget {
    Q_OBJECT
public:
    InventoryPage(const Theme& theme, PageRecord record, QWidget* parent = nullptr);

    const PageRecord& record() const { return record_; }
    void setRecord(PageRecord record);
    // Where the live cards of the page go; stays in place across setRecord().
    QVBoxLayout* liveCardsLayout() const { return liveLayout_; }

private:
    void build();
    QWidget* makeHeader();
    QWidget* makeTiles();
    QWidget* makeCard(const CardRecord& card);
    QWidget* makeItem(const ItemRecord& item, QWidget* parent);

    const Theme& theme_;
    PageRecord record_;
    QColor accent_;
    QWidget* inventory_ = nullptr;
    QVBoxLayout* inventoryLayout_;
    QVBoxLayout* liveLayout_;
};

// The scrolling frame every page sits in, with the page's margins.
QWidget* makeScrollingPage(const Theme& theme, QWidget* content, QWidget* parent = nullptr);
// The page header: the icon on an accent patch, a large title and a subtitle.
QWidget* makePageHeader(const Theme& theme, const QString& icon, const QColor& accent, const QString& title,
                        const QString& subtitle, QWidget* parent = nullptr);

} // namespace tallowmere
