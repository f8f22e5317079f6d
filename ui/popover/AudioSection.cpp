#include "ui/popover/AudioSection.h"

#include "ui/components/Icons.h"
#include "ui/components/SectionLabel.h"
#include "ui/popover/PopoverCard.h"
#include "ui/popover/PopoverTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace tallowmere {

namespace {
constexpr int kSliderMax = 1000;
constexpr qreal kTrackHeight = 4;
constexpr qreal kThumbSize = 12;
} // namespace

VolumeSlider::VolumeSlider(const Theme& theme, QWidget* parent)
    : QAbstractSlider(parent)
    , theme_(theme)
{
    setRange(0, kSliderMax);
    setOrientation(Qt::Horizontal);
    setFixedHeight(sizeHint().height());
    setCursor(Qt::PointingHandCursor);
}

void VolumeSlider::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const qreal usable = width() - kThumbSize;
    const qreal x = kThumbSize / 2 + usable * value() / kSliderMax;
    const QRectF track(kThumbSize / 2, (height() - kTrackHeight) / 2, usable, kTrackHeight);
    painter.setBrush(theme_.colors.track);
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);
    painter.setBrush(theme_.colors.accent);
    painter.drawRoundedRect(QRectF(track.left(), track.top(), x - track.left(), kTrackHeight), kTrackHeight / 2,
                            kTrackHeight / 2);
    painter.setBrush(QColor(Qt::white));
    painter.drawEllipse(QPointF(x, height() / 2.0), kThumbSize / 2, kThumbSize / 2);
}

void VolumeSlider::setFromX(int x)
{
    const qreal usable = std::max<qreal>(1, width() - kThumbSize);
    const qreal f = std::clamp((x - kThumbSize / 2) / usable, 0.0, 1.0);
    setValue(int(std::lround(f * kSliderMax)));
}

void VolumeSlider::mousePressEvent(QMouseEvent* event)
{
    setSliderDown(true);
    setFromX(int(event->position().x()));
}

void VolumeSlider::mouseMoveEvent(QMouseEvent* event)
{
    setFromX(int(event->position().x()));
}

AudioAppRow::AudioAppRow(const Theme& theme, const AudioRowData& session, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , name_(makeLabel({}, Theme::font(10), theme.colors.text, this))
    , mute_(new QToolButton(this))
    , slider_(new VolumeSlider(theme, this))
    , volume_(makeLabel({}, Theme::font(9.5), theme.colors.secondaryText, this))
{
    mute_->setAutoRaise(true);
    mute_->setIconSize(QSize(14, 14));
    mute_->setCursor(Qt::PointingHandCursor);
    volume_->setFixedWidth(34);
    volume_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    name_->setMinimumWidth(70);
    name_->setMaximumWidth(110);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 2, 0, 2);
    row->setSpacing(theme.spacing.small);
    row->addWidget(name_);
    row->addWidget(mute_);
    row->addWidget(slider_, 1);
    row->addWidget(volume_);

    connect(mute_, &QToolButton::clicked, this, &AudioAppRow::muteClicked);
    connect(slider_, &QAbstractSlider::valueChanged, this, [this](int v) {
        const double value = double(v) / kSliderMax;
        volume_->setText(volumeText(value));
        emit volumeChanged(value);
    });
    setSession(session);
}

void AudioAppRow::setSession(const AudioRowData& session)
{
    session_ = session;
    setAccessibleName(session.name);
    name_->setText(name_->fontMetrics().elidedText(session.name, Qt::ElideRight, name_->maximumWidth()));
    name_->setToolTip(session.subtitle.isEmpty() ? session.name : session.name + QLatin1Char('\n') + session.subtitle);
    const QString icon = session.isMuted ? QStringLiteral("speaker.slash.fill") : QStringLiteral("speaker.wave.2.fill");
    mute_->setIcon(Icons::tintedIcon(icon, session.isMuted ? theme_.colors.tertiaryText : theme_.colors.text, 14));
    mute_->setAccessibleName(session.isMuted ? QStringLiteral("Unmute") : QStringLiteral("Mute"));
    // The user's drag wins over a refresh that arrives meanwhile.
    if (!slider_->isSliderDown()) {
        const QSignalBlocker quiet(slider_);
        slider_->setValue(int(std::lround(session.volume / 100.0 * kSliderMax)));
    }
    volume_->setText(volumeText(double(slider_->value()) / kSliderMax));
}

AudioSection::AudioSection(const Theme& theme, PopoverAudio audio, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , audio_(std::move(audio))
    , rowsLayout_(new QVBoxLayout)
    , empty_(makeLabel(QStringLiteral("No apps playing audio"), Theme::font(10), theme.colors.tertiaryText, this))
{
    setObjectName(QStringLiteral("audio"));
    empty_->setObjectName(QStringLiteral("audio.empty"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme.spacing.small);
    column->addWidget(new SectionLabel(theme, QStringLiteral("Audio \u00B7 Per-app volume"),
                                       Icons::tintedIcon(QStringLiteral("speaker.wave.2.fill"),
                                                         theme.colors.secondaryText, 12),
                                       this));
    rowsLayout_->setSpacing(2);
    column->addLayout(rowsLayout_);
    column->addWidget(empty_);
    if (audio_.watch)
        audio_.watch(this, [this] { rebuild(); });
    rebuild();
}

AudioSection::~AudioSection()
{
    if (polling_ && audio_.stop)
        audio_.stop();
}

bool AudioSection::showsEmptyState() const
{
    return rows_.isEmpty();
}

void AudioSection::showEvent(QShowEvent* event)
{
    if (!polling_ && audio_.start) {
        polling_ = true;
        audio_.start();
    }
    rebuild();
    QWidget::showEvent(event);
}

void AudioSection::hideEvent(QHideEvent* event)
{
    if (polling_ && audio_.stop) {
        polling_ = false;
        audio_.stop();
    }
    QWidget::hideEvent(event);
}

void AudioSection::rebuild()
{
    const QList<AudioRowData> sessions = audio_.sessions ? audio_.sessions() : QList<AudioRowData>{};
    // Rows keep their identity by position; surplus rows go, missing ones are added.
    while (rows_.size() > sessions.size()) {
        AudioAppRow* gone = rows_.takeLast();
        gone->hide();
        gone->deleteLater();
    }
    for (qsizetype i = 0; i < sessions.size(); ++i) {
        if (i < rows_.size()) {
            rows_[i]->setSession(sessions[i]);
            continue;
        }
        auto* row = new AudioAppRow(theme_, sessions[i], this);
        connect(row, &AudioAppRow::volumeChanged, this, [this, row](double value) {
            if (audio_.setVolume)
                audio_.setVolume(row->session().id, value * 100);
        });
        connect(row, &AudioAppRow::muteClicked, this, [this, row] {
            if (audio_.toggleMute)
                audio_.toggleMute(row->session().id);
        });
        rowsLayout_->addWidget(row);
        rows_.append(row);
    }
    empty_->setVisible(rows_.isEmpty());
}

} // namespace tallowmere
