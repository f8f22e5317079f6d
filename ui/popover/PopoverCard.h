#pragma once

#include "ui/components/Label.h"

#include "ui/components/Theme.h"

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace tallowmere {

// One compact card of the popover: icon and title on the left, a headline figure on the right,
// a detail line below them and a body (graph or bar) under that.
class PopoverCard : public QWidget {
    Q_OBJECT
public:
    PopoverCard(const Theme& theme, const QString& title, const QString& icon, QColor accent, QWidget* parent = nullptr);

    void setIcon(const QString& icon);
    void setTitleNote(const QString& note);
    void setHeadline(const QString& headline);
    void setDetail(const QString& detail);
    QVBoxLayout* body() const { return body_; }

    QString headline() const;
    QString detail() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QColor accent_;
    QLabel* icon_;
    QLabel* note_;
    QLabel* headline_;
    QLabel* detail_;
    QVBoxLayout* body_;
};


} // namespace tallowmere
