#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace tallowmere {

struct Theme;

// One label/value line of a card. A revealable row shows bullets in place of its value until
// "Reveal" is pressed.
class InfoRow : public QWidget {
    Q_OBJECT
public:
    InfoRow(const Theme& theme, const QString& label, const QString& value, bool mono = false, bool revealable = false,
            QWidget* parent = nullptr);

    QString label() const;
    void setValue(const QString& value);
    // The text on screen (bullets while a revealable row is hidden).
    QString shownValue() const;
    bool isRevealed() const { return revealed_; }
    // Flips a revealable row between hidden and shown.
    void toggleReveal();
    QPushButton* revealButton() const { return button_; }

    // The masked form of a value: one bullet per character, at least eight.
    static QString masked(const QString& value);

private:
    void refresh();

    const Theme& theme_;
    QString value_;
    bool revealed_ = true;
    QLabel* label_;
    QLabel* value_label_;
    QPushButton* button_ = nullptr;
};

} // namespace tallowmere
