#pragma once

#include "ui/pages/SpecCategory.h"

#include <QList>
#include <QString>

#include <optional>

namespace tallowmere {

// What a page shows, with every text already formatted. The page widgets only paint these,
// so the texts are checked without a screen.

// A summary tile: icon, title, large value, optional subtitle.
struct TileRecord {
    QString title{};
    QString value{};
    std::optional<QString> subtitle{};
    QString icon{};

    bool operator==(const TileRecord&) const = default;
};

// One label/value line. A revealable row masks its value until the user asks to see it.
struct RowRecord {
    QString label{};
    QString value{};
    bool mono = false;
    bool revealable = false;

    bool operator==(const RowRecord&) const = default;
};

// One entry of a list inside a card: a device, a volume, an interface.
struct ItemRecord {
    QString name{};
    QString icon{};
    QList<RowRecord> rows{};
    std::optional<double> usedFraction{}; // a storage bar under the name
    QStringList captions{};              // short texts beside the bar

    bool operator==(const ItemRecord&) const = default;
};

// Centred icon and message standing in for an empty list.
struct EmptyState {
    QString icon{};
    QString message{};

    bool operator==(const EmptyState&) const = default;
};

// A titled card holding rows, a storage bar and/or a list.
struct CardRecord {
    QString title{};
    QString icon{};
    std::optional<QString> caption{}; // a subtitle under the title
    QList<RowRecord> rows{};
    std::optional<double> usedFraction{};
    QString barCaption{};
    QList<ItemRecord> items{};
    std::optional<EmptyState> empty{}; // shown instead of `items` when there are none

    bool operator==(const CardRecord&) const = default;
};

struct PageRecord {
    SpecCategory category = SpecCategory::summary;
    QString title{};
    QString subtitle{};
    QList<TileRecord> tiles{};
    QList<CardRecord> cards{};
    // Pages with live figures keep room for their live cards below the inventory.
    bool hasLiveCards = false;

    bool operator==(const PageRecord&) const = default;
};

} // namespace tallowmere
