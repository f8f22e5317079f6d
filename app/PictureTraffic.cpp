#include "app/PictureTraffic.h"

#include "history/NetworkUsageStore.h"

#include <QStringList>

#include <cmath>
#include <numbers>
#include <random>

namespace tallowmere {

namespace {

struct PictureApp {
    const char* label;
    double megabytesPerHour;  // at the busiest time of day
    double uploadShare;
    QStringList hosts;
    QStringList addresses{};  // named servers get one of the documentation range each
};

QList<PictureApp> pictureApps()
{
    QStringList browserHosts;
    for (const char* host : {"www.wikipedia.org", "github.com", "codeload.github.com", "fonts.gstatic.com",
                             "news.ycombinator.com", "www.youtube.com", "i.ytimg.com", "rr3.googlevideo.com",
                             "cdn.jsdelivr.net", "lwn.net", "www.openstreetmap.org", "tile.openstreetmap.org",
                             "docs.python.org", "2a00:1450:4001:80b::200e", "151.101.1.140", "mozilla.cloudflare-dns.com"})
        browserHosts << QString::fromLatin1(host);
    QList<PictureApp> apps{
        {"firefox-esr", 260, 0.06, browserHosts},
        {"spotify", 70, 0.02, {"audio-ak.spotifycdn.com", "spclient.wg.spotify.com", "35.186.224.25"}},
        {"thunderbird", 18, 0.35, {"imap.fastmail.com", "smtp.fastmail.com"}},
        {"syncthing", 25, 0.55, {"relay.syncthing.net", "192.168.1.40", "discovery.syncthing.net"}},
        {"apt", 40, 0.01, {"deb.debian.org", "security.debian.org"}},
        {"ssh", 6, 0.45, {"build.lan", "192.168.1.12"}},
        {"flatpak", 22, 0.01, {"dl.flathub.org"}},
        {"signal-desktop", 4, 0.40, {"chat.signal.org", "cdn.signal.org"}},
        {"zoom", 90, 0.45, {"zoom.us", "us04web.zoom.us"}},
        {"curl", 8, 0.05, {"example.org"}},
        {"python3", 3, 0.30, {"pypi.org", "files.pythonhosted.org"}},
    };
    int next = 1;
    for (PictureApp& app : apps)
        for (const QString& host : app.hosts)
            app.addresses << (host.front().isDigit() ? host : QStringLiteral("198.51.100.%1").arg(next++));
    return apps;
}

// From quiet nights to busy evenings, 0.05 to 1 over the day.
double dayRhythm(std::int64_t unixSeconds)
{
    const double hour = double(unixSeconds % 86400) / 3600.0;
    const double wave = std::sin(std::numbers::pi * (hour - 7.0) / 16.0);
    return hour >= 7.0 && hour <= 23.0 ? 0.05 + 0.95 * wave * wave : 0.05;
}

} // namespace

void recordPictureWeek(NetworkUsageStore& store, WallTime now)
{
    const QList<PictureApp> apps = pictureApps();
    std::mt19937 random(20261123);
    std::uniform_real_distribution<double> jitter(0.2, 1.8);
    std::uniform_int_distribution<int> coin(0, 5);
    const std::int64_t end = unixSeconds(now);
    const auto recordSlot = [&](std::int64_t at, double hours) {
        std::vector<FlowDelta> deltas;
        const double rhythm = dayRhythm(at);
        for (const PictureApp& app : apps) {
            // Apps are not always running: some slots pass without them.
            if (coin(random) == 0)
                continue;
            const qsizetype count = app.hosts.size();
            for (qsizetype i = 0; i < count; ++i) {
                // Earlier servers of an app get most of its traffic.
                const double share = 1.0 / double((i + 1) * (i + 1));
                const double bytes = app.megabytesPerHour * 1048576.0 * hours * rhythm * share * jitter(random);
                deltas.push_back({QString::fromLatin1(app.label), app.addresses[i], app.hosts[i],
                                  static_cast<std::uint64_t>(bytes * (1 - app.uploadShare)),
                                  static_cast<std::uint64_t>(bytes * app.uploadShare)});
            }
        }
        store.record(deltas, fromUnixSeconds(at));
    };
    for (std::int64_t at = end - 7 * 86400; at < end - 3600; at += 1800)
        recordSlot(at, 0.5);
    for (std::int64_t at = end - 3600; at <= end; at += 60)
        recordSlot(at, 1.0 / 60.0);
}

} // namespace tallowmere
