#pragma once

#include "ui/components/Theme.h"

#include <QIcon>
#include <QWidget>

namespace tallowmere {

// A small section caption in the secondary colour, with an optional icon before it.
class SectionLabel : public QWidget {
    Q_OBJECT
public:
    SectionLabel(const Theme& theme, const QString& title, const QIcon& icon = {}, QWidget* parent = nullptr);

    const QString& title() const { return title_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QString title_;
    QIcon icon_;
};

// A hairline between sections.
class Separator : public QWidget {
    Q_OBJECT
public:
    explicit Separator(const Theme& theme, Qt::Orientation orientation = Qt::Horizontal, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
};

} // namespace tallowmere
