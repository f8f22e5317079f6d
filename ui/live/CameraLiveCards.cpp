#include "ui/live/LiveCards.h"

#include "hardware/CameraMonitoringService.h"
#include "ui/components/Card.h"
#include "ui/components/Icons.h"
#include "ui/components/InfoRow.h"
#include "ui/components/Label.h"
#include "ui/components/Theme.h"
#include "ui/live/WhileShown.h"
#include "ui/pages/InventoryPage.h"
#include "ui/window/WindowServices.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace tallowmere {

namespace {

// Whether any camera streams, and how many.
class CameraActivityCard : public Card {
public:
    CameraActivityCard(const Theme& theme, const QColor& accent, QWidget* parent)
        : Card(theme, QStringLiteral("Camera Activity"), QStringLiteral("camera"), accent, parent)
        , theme_(theme)
        , dot_(new QLabel(this))
        , state_(makeLabel({}, Theme::font(15, QFont::DemiBold), theme.colors.text, this))
        , status_(makeLabel({}, Theme::font(10.5), theme.colors.secondaryText, this))
    {
        state_->setObjectName(QStringLiteral("cameraState"));
        status_->setObjectName(QStringLiteral("cameraStatus"));
        dot_->setFixedSize(10, 10);
        auto* head = new QHBoxLayout;
        head->setSpacing(theme.spacing.small);
        head->addWidget(dot_);
        head->addWidget(state_, 1);
        body()->addLayout(head);
        body()->addWidget(status_);
    }

    void display(const CameraMonitoringService& service)
    {
        const auto& devices = service.devices();
        const bool inUse = std::any_of(devices.begin(), devices.end(), [](const CameraDevice& d) { return d.isInUse; });
        state_->setText(inUse ? QStringLiteral("In Use") : QStringLiteral("Idle"));
        status_->setText(service.statusText());
        // A streaming camera is something to notice; an idle one is not.
        const QColor ink = inUse ? theme_.colors.critical : theme_.colors.tertiaryText;
        dot_->setStyleSheet(QStringLiteral("background: %1; border-radius: 5px;").arg(ink.name()));
    }

private:
    const Theme& theme_;
    QLabel* dot_;
    QLabel* state_;
    QLabel* status_;
};

// One camera: its name with the in-use mark, its kind, and its best picture.
QWidget* makeCameraEntry(const Theme& theme, const QColor& accent, const CameraDevice& camera, QWidget* parent)
{
    auto* box = new QWidget(parent);
    box->setObjectName(QStringLiteral("camera:") + camera.name);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, theme.spacing.tight, 0, theme.spacing.tight);
    layout->setSpacing(theme.spacing.tight);
    auto* head = new QHBoxLayout;
    head->setSpacing(theme.spacing.medium);
    auto* icon = new QLabel(box);
    icon->setPixmap(Icons::tinted(QStringLiteral("web.camera"), accent, 16, box->devicePixelRatioF()));
    head->addWidget(icon);
    auto* names = new QVBoxLayout;
    names->setSpacing(0);
    QLabel* name = makeLabel(camera.name, Theme::font(10.5, QFont::Medium), theme.colors.text, box);
    name->setWordWrap(true);
    names->addWidget(name);
    names->addWidget(makeLabel(camera.typeDescription, Theme::font(9.5), theme.colors.secondaryText, box));
    head->addLayout(names, 1);
    if (camera.isInUse)
        head->addWidget(makeLabel(QStringLiteral("In Use"), Theme::font(9.5, QFont::DemiBold), theme.colors.critical, box),
                        0, Qt::AlignTop);
    layout->addLayout(head);
    const auto row = [&](const QString& label, const QString& value) {
        auto* line = new InfoRow(theme, label, value, false, false, box);
        line->setContentsMargins(26, 0, 0, 0);
        layout->addWidget(line);
    };
    if (camera.maxResolution)
        row(QStringLiteral("Max Resolution"), *camera.maxResolution);
    if (camera.maxFrameRate)
        row(QStringLiteral("Max Frame Rate"), QString::number(*camera.maxFrameRate) + QStringLiteral(" fps"));
    if (!camera.manufacturer.isEmpty())
        row(QStringLiteral("Manufacturer"), camera.manufacturer);
    return box;
}

// The cameras the machine has, rebuilt whenever the list changes (it is published only then).
class CameraDevicesCard : public Card {
public:
    CameraDevicesCard(const Theme& theme, const QColor& accent, QWidget* parent)
        : Card(theme, QStringLiteral("Cameras"), QStringLiteral("web.camera"), accent, parent)
        , theme_(theme)
        , accent_(accent)
        , list_(new QVBoxLayout)
        , empty_(makeEmptyState(theme, QStringLiteral("video.slash"), QStringLiteral("No cameras detected"), this))
    {
        list_->setSpacing(theme.spacing.small);
        body()->addLayout(list_);
        body()->addWidget(empty_);
    }

    void display(const std::vector<CameraDevice>& devices)
    {
        while (QLayoutItem* item = list_->takeAt(0)) {
            delete item->widget();
            delete item;
        }
        for (const CameraDevice& camera : devices)
            list_->addWidget(makeCameraEntry(theme_, accent_, camera, this));
        empty_->setVisible(devices.empty());
    }

private:
    const Theme& theme_;
    QColor accent_;
    QVBoxLayout* list_;
    QWidget* empty_;
};

} // namespace

void addCameraLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page)
{
    CameraMonitoringService* service = services.camera;
    if (!service)
        return;
    const QColor accent = categoryAccent(SpecCategory::camera, theme);
    auto* activity = new CameraActivityCard(theme, accent, &page);
    auto* cameras = new CameraDevicesCard(theme, accent, &page);
    page.liveCardsLayout()->addWidget(activity);
    page.liveCardsLayout()->addWidget(cameras);

    const QPointer<CameraMonitoringService> guard(service);
    const auto show = [activity, cameras, guard] {
        if (!guard)
            return;
        activity->display(*guard);
        cameras->display(guard->devices());
    };
    QObject::connect(service, &CameraMonitoringService::devicesChanged, activity, show);
    show();
    // The cameras are looked at only while someone looks at the page.
    whileShown(activity, [guard](bool shown) {
        if (guard)
            guard->setPageActive(shown);
    });
}

} // namespace tallowmere
