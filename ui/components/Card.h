#pragma once

#include <QColor>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tallowmere {

struct Theme;

// A titled, rounded card: an icon in the accent colour, the title, an optional caption, and a
// body that callers fill with rows, lists or graphs.
class Card : public QWidget {
    Q_OBJECT
public:
    Card(const Theme& theme, const QString& title, const QString& icon, const QColor& accent, QWidget* parent = nullptr);

    void setCaption(const QString& caption);
    // Puts a small control (a menu button, a picker) at the right end of the title row.
    void addHeaderWidget(QWidget* widget);
    QVBoxLayout* body() const { return body_; }
    QString title() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QLabel* title_;
    QLabel* caption_;
    QHBoxLayout* header_;
    QVBoxLayout* body_;
};

// A centred icon and message standing in for an empty list; without an icon, one quiet line.
QWidget* makeEmptyState(const Theme& theme, const QString& icon, const QString& message, QWidget* parent = nullptr);

// A rounded push button for the actions inside cards: `prominent` ones in the accent colour,
// the others on the theme's track colour.
QPushButton* makeActionButton(const Theme& theme, const QString& text, bool prominent, QWidget* parent = nullptr);

} // namespace tallowmere
