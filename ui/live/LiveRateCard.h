#pragma once

#include "ui/components/Card.h"

#include <QList>

class QLabel;

namespace tallowmere {

class RateHistoryGraph;

// The card the Storage and Network pages share for a pair of live rates: the two current
// figures under their captions (first with `arrow.down`, second with `arrow.up`), a line of
// notes at the right, and the graph of the last minute of both.
class LiveRateCard : public Card {
    Q_OBJECT
public:
    struct Captions {
        QString title;
        QString first;
        QString second;
    };

    LiveRateCard(const Theme& theme, const Captions& captions, const QColor& accent, QWidget* parent = nullptr);

    void setRates(const QString& first, const QString& second);
    // Shown at the right of the figures, one per line; empty lines are hidden.
    void setNotes(const QString& upper, const QString& lower = {});
    void setHistory(QList<double> first, QList<double> second);

    QString firstRate() const;
    QString secondRate() const;
    RateHistoryGraph* graph() const { return graph_; }

private:
    QLabel* firstValue_;
    QLabel* secondValue_;
    QLabel* upperNote_;
    QLabel* lowerNote_;
    RateHistoryGraph* graph_;
};

} // namespace tallowmere
