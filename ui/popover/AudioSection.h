#pragma once

#include "ui/components/Theme.h"
#include "ui/popover/PopoverAudio.h"

#include <QAbstractSlider>
#include <QWidget>

class QLabel;
class QToolButton;
class QVBoxLayout;

namespace tallowmere {

// The mixer's slider: a thin track filled to the value with a round thumb; values 0...1000.
class VolumeSlider : public QAbstractSlider {
    Q_OBJECT
public:
    explicit VolumeSlider(const Theme& theme, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {160, 16}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void setFromX(int x);
    const Theme& theme_;
};

// One application: name, mute button, slider and the volume as a percentage.
class AudioAppRow : public QWidget {
    Q_OBJECT
public:
    AudioAppRow(const Theme& theme, const AudioRowData& session, QWidget* parent = nullptr);

    void setSession(const AudioRowData& session);
    const AudioRowData& session() const { return session_; }

signals:
    void volumeChanged(double value);  // 0...1
    void muteClicked();

private:
    const Theme& theme_;
    AudioRowData session_;
    QLabel* name_;
    QToolButton* mute_;
    VolumeSlider* slider_;
    QLabel* volume_;
};

// "Audio · Per-app volume": one row per playing application, or "No apps playing audio". It
// asks the service to poll only while it is on screen.
class AudioSection : public QWidget {
    Q_OBJECT
public:
    AudioSection(const Theme& theme, PopoverAudio audio, QWidget* parent = nullptr);
    ~AudioSection() override;

    QList<AudioAppRow*> rows() const { return rows_; }
    bool showsEmptyState() const;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void rebuild();

    const Theme& theme_;
    PopoverAudio audio_;
    bool polling_ = false;
    QVBoxLayout* rowsLayout_;
    QLabel* empty_;
    QList<AudioAppRow*> rows_;
};

} // namespace tallowmere
