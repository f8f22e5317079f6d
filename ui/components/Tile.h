#pragma once

#include <QColor>
#include <QWidget>

#include <optional>

namespace tallowmere {

struct Theme;

// A summary tile: the icon on a soft patch of the accent colour, a small title, a large value
// and an optional subtitle. Painted whole; long values are elided.
class Tile : public QWidget {
    Q_OBJECT
public:
    Tile(const Theme& theme, const QString& icon, const QColor& accent, QWidget* parent = nullptr);

    void setTexts(const QString& title, const QString& value, const std::optional<QString>& subtitle);
    const QString& title() const { return title_; }
    const QString& value() const { return value_; }
    const QString& subtitle() const { return subtitle_; }

    QSize sizeHint() const override { return {230, 104}; }
    QSize minimumSizeHint() const override { return {150, 104}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QString icon_;
    QColor accent_;
    QString title_;
    QString value_;
    QString subtitle_;
};

} // namespace tallowmere
