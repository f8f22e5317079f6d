// The battery page's live cards: a new reading applied and the page drawn again, the work a
// live page does per sample. Drawn on the offscreen platform.
#include "app/AppServices.h"
#include "app/WindowSeam.h"
#include "bench/support/PrivateServices.h"
#include "power/BatteryMonitoringService.h"
#include "ui/components/Theme.h"
#include "ui/live/LiveCards.h"
#include "ui/pages/InventoryPage.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>

#include <map>
#include <utility>

#include <benchmark/benchmark.h>

using namespace tallowmere;

namespace {

// Sleeps that end when the benchmark says so: wakeAll() ends every sleep asked for so far.
class StepScheduler final : public Scheduler {
public:
    std::unique_ptr<QObject> sleep(std::chrono::milliseconds, std::function<void()> wake) override
    {
        auto handle = std::make_unique<QObject>();
        sleeps_[handle.get()] = std::move(wake);
        QObject::connect(handle.get(), &QObject::destroyed, [this](QObject* gone) { sleeps_.erase(gone); });
        return handle;
    }
    void wakeAll()
    {
        auto due = std::exchange(sleeps_, {});
        for (auto& [handle, wake] : due)
            wake();
    }

private:
    std::map<QObject*, std::function<void()>> sleeps_;
};

BatteryInfo reading(int percent)
{
    BatteryInfo b;
    b.isPresent = true;
    b.percentage = percent;
    b.isCharging = false;
    b.powerSource = QStringLiteral("Battery Power");
    b.timeRemainingMinutes = 2 * percent;
    b.cycleCount = 312;
    b.designCapacity = 5000;
    b.maxCapacity = 4100;
    b.currentCapacity = 41 * percent;
    b.amperage = -1450 - percent;
    b.voltage = 11000 + 10 * percent;
    return b;
}

} // namespace

// The battery page with its live cards, over a service whose reading the benchmark changes.
struct BatteryPage {
    QTemporaryDir dir;
    std::unique_ptr<AppServices> services;
    int percent = 50;
    std::shared_ptr<StepScheduler> scheduler = std::make_shared<StepScheduler>();
    BatteryMonitoringService battery{QDBusConnection(QStringLiteral("no-bus")), [this] { return reading(percent); }, {},
                                     scheduler};
    InventoryPage page{Theme::darkTheme(), makeSpecPage(SpecCategory::battery, PageInputs{.battery = reading(50)})};
    QImage image{1000, 900, QImage::Format_ARGB32_Premultiplied};

    BatteryPage()
    {
        services = bench::makePrivateServices(dir.path(), false);
        WindowServices window = makeWindowServices(*services);
        window.battery = &battery;
        addLiveCards(Theme::darkTheme(), window, SpecCategory::battery, page);
        page.resize(image.size());
        page.show();
        page.render(&image);
    }
    // The next refresh reads a changed value and publishes it to the cards, which lay out again.
    void nextReading()
    {
        percent = percent == 50 ? 51 : 50;
        scheduler->wakeAll();
        QCoreApplication::sendPostedEvents();
    }
};

// A changed reading applied to the cards, with the layout it causes.
static void BM_BatteryPageNewReading(benchmark::State& state)
{
    BatteryPage bench;
    for (auto _ : state)
        bench.nextReading();
}
BENCHMARK(BM_BatteryPageNewReading)->Unit(benchmark::kMicrosecond);

// The same, and the whole page drawn again: an upper bound, as the screen repaints only the
// rows that changed.
static void BM_BatteryPageNewReadingAndFullRepaint(benchmark::State& state)
{
    BatteryPage bench;
    for (auto _ : state) {
        bench.nextReading();
        bench.page.render(&bench.image);
    }
}
BENCHMARK(BM_BatteryPageNewReadingAndFullRepaint)->Unit(benchmark::kMillisecond);
