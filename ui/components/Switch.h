#pragma once

#include "ui/components/Theme.h"

#include <QAbstractButton>

namespace tallowmere {

// An on/off switch drawn as a small pill with a round knob; checked is on.
class Switch : public QAbstractButton {
    Q_OBJECT
public:
    explicit Switch(const Theme& theme, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {34, 20}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
};

} // namespace tallowmere
