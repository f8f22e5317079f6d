#pragma once

#include "ui/components/Theme.h"

#include <QAbstractButton>

namespace tallowmere {

// A flat button that lights up under the pointer: optional icon, text, and an optional hint
// drawn at the right edge (a key shortcut, for example). Checkable buttons show their checked
// state in the accent colour, which makes the same component serve as a chip.
class HoverButton : public QAbstractButton {
    Q_OBJECT
public:
    explicit HoverButton(const Theme& theme, const QString& text, QWidget* parent = nullptr);

    void setHint(const QString& hint);
    const QString& hint() const { return hint_; }
    void setCentered(bool centered);
    bool isHovered() const { return hovered_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    const Theme& theme_;
    QString hint_;
    bool centered_ = true;
    bool hovered_ = false;
};

} // namespace tallowmere
