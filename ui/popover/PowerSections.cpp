#include "ui/popover/PowerSections.h"

#include "power/KeepAwakeService.h"
#include "power/PowerScheduleService.h"
#include "ui/components/HoverButton.h"
#include "ui/components/Icons.h"
#include "ui/components/SectionLabel.h"
#include "ui/components/Switch.h"
#include "ui/popover/PopoverCard.h"
#include "ui/popover/PopoverTexts.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace tallowmere {

namespace {

constexpr KeepAwakeMode kModes[] = {KeepAwakeMode::displayOn, KeepAwakeMode::displayOff, KeepAwakeMode::lidClosed};
constexpr KeepAwakeDuration kDurations[] = {KeepAwakeDuration::tenMinutes, KeepAwakeDuration::thirtyMinutes,
                                            KeepAwakeDuration::oneHour, KeepAwakeDuration::infinite};

QToolButton* stepper(const Theme& theme, const QString& icon, const QString& name, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setIcon(Icons::tintedIcon(icon, theme.colors.secondaryText, 10));
    button->setIconSize(QSize(10, 10));
    button->setFixedSize(18, 14);
    button->setAccessibleName(name);
    button->setObjectName(name);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

// An up and a down arrow stacked, calling `step` with +1 or -1.
QWidget* stepperPair(const Theme& theme, const QString& what, QWidget* parent, std::function<void(int)> step)
{
    auto* pair = new QWidget(parent);
    auto* column = new QVBoxLayout(pair);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    QToolButton* up = stepper(theme, QStringLiteral("chevron.up"), what + QStringLiteral(" up"), pair);
    QToolButton* down = stepper(theme, QStringLiteral("chevron.down"), what + QStringLiteral(" down"), pair);
    column->addWidget(up);
    column->addWidget(down);
    QObject::connect(up, &QToolButton::clicked, pair, [step] { step(+1); });
    QObject::connect(down, &QToolButton::clicked, pair, [step] { step(-1); });
    return pair;
}

QHBoxLayout* iconRow(const Theme& theme, const QString& icon, const QString& title, QWidget* parent)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(theme.spacing.small);
    auto* glyph = new QLabel(parent);
    glyph->setPixmap(Icons::tinted(icon, theme.colors.text, 14, parent->devicePixelRatioF()));
    row->addWidget(glyph);
    row->addWidget(makeLabel(title, Theme::font(10.5, QFont::Medium), theme.colors.text, parent));
    return row;
}

} // namespace

QString SleepWakeSection::sleepShortcutHint()
{
    return QKeySequence(Qt::Key_Sleep).toString(QKeySequence::NativeText);
}

SleepWakeSection::SleepWakeSection(const Theme& theme, PowerScheduleService& power, QWidget* parent)
    : QWidget(parent)
    , power_(power)
    , wakeSwitch_(new Switch(theme, this))
    , wakeTime_(makeLabel({}, Theme::font(10), theme.colors.secondaryText, this))
    , clock_(makeLabel({}, Theme::font(14, QFont::DemiBold), theme.colors.text, this))
    , meridiem_(new HoverButton(theme, QStringLiteral("AM"), this))
    , problem_(makeLabel({}, Theme::font(9), theme.colors.warning, this))
    , retry_(new HoverButton(theme, QStringLiteral("Try Again"), this))
{
    setObjectName(QStringLiteral("sleepWake"));
    auto* sleepNow = new HoverButton(theme, QStringLiteral("Sleep Now"), this);
    sleepNow->setObjectName(QStringLiteral("sleepNow"));
    sleepNow->setIcon(Icons::tintedIcon(QStringLiteral("moon.fill"), theme.colors.text, 14));
    sleepNow->setHint(sleepShortcutHint());
    sleepNow->setCentered(false);
    connect(sleepNow, &HoverButton::clicked, this, [this] { power_.sleepNow(); });

    wakeSwitch_->setObjectName(QStringLiteral("wakeSwitch"));
    wakeSwitch_->setAccessibleName(QStringLiteral("Wake schedule"));
    connect(wakeSwitch_, &Switch::clicked, this, [this](bool on) {
        power_.setWakeEnabled(on);
        refresh();
    });
    wakeTime_->setObjectName(QStringLiteral("wakeTime"));
    clock_->setObjectName(QStringLiteral("wakeClock"));
    meridiem_->setObjectName(QStringLiteral("meridiem"));
    meridiem_->setFixedWidth(44);
    connect(meridiem_, &HoverButton::clicked, this, [this] { power_.adjustTime(12 * 60); });

    auto* head = iconRow(theme, QStringLiteral("sunrise.fill"), QStringLiteral("Wake schedule"), this);
    head->addStretch();
    head->addWidget(wakeTime_);
    head->addWidget(wakeSwitch_);

    auto* editor = new QHBoxLayout;
    editor->setSpacing(theme.spacing.tight);
    editor->addStretch();
    editor->addWidget(stepperPair(theme, QStringLiteral("Hour"), this, [this](int d) { power_.adjustTime(d * 60); }));
    editor->addWidget(clock_);
    editor->addWidget(stepperPair(theme, QStringLiteral("Minute"), this, [this](int d) { power_.adjustTime(d * 15); }));
    editor->addSpacing(theme.spacing.small);
    editor->addWidget(meridiem_);
    editor->addStretch();

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme.spacing.small);
    column->addWidget(new SectionLabel(theme, QStringLiteral("Sleep & Wake"), {}, this));
    column->addWidget(sleepNow);
    column->addLayout(head);
    column->addLayout(editor);
    column->addWidget(makeLabel(QStringLiteral("Repeats every day"), Theme::font(9), theme.colors.tertiaryText, this),
                      0, Qt::AlignHCenter);
    // The schedule is stored either way; when the system timer could not be put in place the
    // row says so rather than pretend the machine will wake.
    problem_->setObjectName(QStringLiteral("wakeProblem"));
    problem_->setWordWrap(true);
    retry_->setObjectName(QStringLiteral("wakeRetry"));
    connect(retry_, &HoverButton::clicked, this, [this] { power_.applyAgain(); });
    column->addWidget(problem_);
    column->addWidget(retry_);

    for (auto signal : {&PowerScheduleService::wakeEnabledChanged, &PowerScheduleService::wakeHourChanged,
                        &PowerScheduleService::wakeMinuteChanged, &PowerScheduleService::wakeProblemChanged})
        connect(&power_, signal, this, &SleepWakeSection::refresh);
    refresh();
}

void SleepWakeSection::refresh()
{
    wakeSwitch_->setChecked(power_.wakeEnabled());
    wakeTime_->setText(wakeTimeText(power_.wakeHour(), power_.wakeMinute()));
    clock_->setText(wakeClockText(power_.wakeHour(), power_.wakeMinute()));
    meridiem_->setText(meridiemText(power_.wakeHour()));
    problem_->setText(power_.wakeProblem());
    problem_->setVisible(!power_.wakeProblem().isEmpty());
    retry_->setVisible(!power_.wakeProblem().isEmpty());
}

KeepAwakeSection::KeepAwakeSection(const Theme& theme, KeepAwakeService& keepAwake, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , keepAwake_(keepAwake)
    , switch_(new Switch(theme, this))
    , status_(makeLabel({}, Theme::font(9.5), theme.colors.secondaryText, this))
{
    setObjectName(QStringLiteral("keepAwake"));
    switch_->setObjectName(QStringLiteral("keepAwakeSwitch"));
    switch_->setAccessibleName(QStringLiteral("Keep Awake"));
    status_->setObjectName(QStringLiteral("keepAwakeStatus"));
    connect(switch_, &Switch::clicked, this, [this](bool on) {
        on ? keepAwake_.start() : keepAwake_.stop();
        refresh();
    });

    auto* head = new QHBoxLayout;
    auto* titles = new QVBoxLayout;
    titles->setSpacing(1);
    titles->addWidget(new SectionLabel(theme, QStringLiteral("Keep Awake"),
                                       Icons::tintedIcon(QStringLiteral("bolt.fill"), theme.colors.secondaryText, 12), this));
    titles->addWidget(makeLabel(QStringLiteral("Prevent sleep for a set duration"), Theme::font(9.5),
                                theme.colors.tertiaryText, this));
    head->addLayout(titles);
    head->addStretch();
    head->addWidget(switch_);

    auto* modes = new QVBoxLayout;
    modes->setSpacing(2);
    for (KeepAwakeMode mode : kModes) {
        auto* option = new HoverButton(theme, modeTitle(mode), this);
        option->setObjectName(QStringLiteral("mode.") + rawName(mode));
        option->setCentered(false);
        connect(option, &HoverButton::clicked, this, [this, mode] {
            keepAwake_.setMode(mode);
            if (keepAwake_.isActive())
                keepAwake_.start();
            refresh();
        });
        modes->addWidget(option);
        modes_.append(option);
    }

    auto* chips = new QHBoxLayout;
    chips->setSpacing(theme.spacing.small);
    for (KeepAwakeDuration duration : kDurations) {
        auto* chip = new HoverButton(theme, durationChipTitle(duration), this);
        chip->setObjectName(QStringLiteral("duration.") + rawName(duration));
        chip->setCheckable(true);
        chip->setAutoExclusive(false);
        connect(chip, &HoverButton::clicked, this, [this, duration] {
            keepAwake_.setDuration(duration);
            keepAwake_.start();
            refresh();
        });
        chips->addWidget(chip);
        chips_.append(chip);
    }

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme.spacing.small);
    column->addLayout(head);
    column->addWidget(status_);
    column->addLayout(modes);
    column->addLayout(chips);

    for (auto signal : {&KeepAwakeService::isActiveChanged, &KeepAwakeService::modeChanged,
                        &KeepAwakeService::durationChanged, &KeepAwakeService::countdownTickChanged,
                        &KeepAwakeService::expiresAtChanged})
        connect(&keepAwake_, signal, this, &KeepAwakeSection::refresh);
    refresh();
}

void KeepAwakeSection::refresh()
{
    switch_->setChecked(keepAwake_.isActive());
    const std::optional<QString> status = keepAwake_.statusText();
    status_->setText(status.value_or(QString()));
    status_->setVisible(status.has_value());
    for (qsizetype i = 0; i < modes_.size(); ++i) {
        const bool selected = kModes[i] == keepAwake_.mode();
        HoverButton* option = modes_[i];
        const QString icon = selected ? QStringLiteral("checkmark.circle.fill") : modeIcon(kModes[i]);
        option->setIcon(Icons::tintedIcon(icon, selected ? theme_.colors.accent : theme_.colors.secondaryText, 14));
        option->setFont(Theme::font(10.5, selected ? QFont::DemiBold : QFont::Medium));
        option->setAccessibleDescription(selected ? QStringLiteral("selected") : QString());
    }
    for (qsizetype i = 0; i < chips_.size(); ++i)
        chips_[i]->setChecked(kDurations[i] == keepAwake_.duration());
}

} // namespace tallowmere
