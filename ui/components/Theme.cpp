#include "ui/components/Theme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>

namespace tallowmere {

namespace {

Theme makeDark()
{
    Theme t;
    t.dark = true;
    t.colors = {
        .window = QColor(0x1c, 0x1c, 0x1f),
        .card = QColor(0x2a, 0x2a, 0x2e),
        .cardHover = QColor(0x36, 0x36, 0x3b),
        .border = QColor(255, 255, 255, 18),
        .text = QColor(0xf2, 0xf2, 0xf5),
        .secondaryText = QColor(0xa8, 0xa8, 0xb0),
        .tertiaryText = QColor(0x70, 0x70, 0x78),
        .separator = QColor(255, 255, 255, 26),
        .track = QColor(255, 255, 255, 30),
        .accent = QColor(0x3d, 0x8b, 0xfd),
        .cpu = QColor(0x4c, 0x9a, 0xff),
        .memory = QColor(0xb0, 0x7c, 0xf7),
        .disk = QColor(0xff, 0xa8, 0x3d),
        .network = QColor(0x3d, 0xd6, 0x8c),
        .upload = QColor(0xff, 0x70, 0x8a),
        .battery = QColor(0x52, 0xd0, 0x6a),
        .warning = QColor(0xff, 0xc4, 0x3d),
        .critical = QColor(0xff, 0x5a, 0x52),
    };
    return t;
}

Theme makeLight()
{
    Theme t;
    t.dark = false;
    t.colors = {
        .window = QColor(0xf4, 0xf4, 0xf6),
        .card = QColor(0xff, 0xff, 0xff),
        .cardHover = QColor(0xec, 0xec, 0xf0),
        .border = QColor(0, 0, 0, 20),
        .text = QColor(0x1d, 0x1d, 0x1f),
        .secondaryText = QColor(0x5f, 0x5f, 0x66),
        .tertiaryText = QColor(0x98, 0x98, 0xa0),
        .separator = QColor(0, 0, 0, 24),
        .track = QColor(0, 0, 0, 22),
        .accent = QColor(0x0a, 0x6c, 0xf0),
        .cpu = QColor(0x1a, 0x73, 0xe8),
        .memory = QColor(0x8e, 0x4c, 0xe0),
        .disk = QColor(0xe0, 0x80, 0x10),
        .network = QColor(0x1a, 0xa0, 0x5e),
        .upload = QColor(0xe0, 0x40, 0x60),
        .battery = QColor(0x28, 0xa7, 0x45),
        .warning = QColor(0xd0, 0x90, 0x00),
        .critical = QColor(0xd9, 0x30, 0x25),
    };
    return t;
}

// org.freedesktop.appearance color-scheme: 0 no preference, 1 dark, 2 light.
std::optional<bool> portalPrefersDark()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return std::nullopt;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
    call << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    QDBusMessage reply = bus.call(call, QDBus::Block, 300);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    QVariant value = reply.arguments().constFirst();
    // The value arrives wrapped once or twice in variants.
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    switch (value.toUInt()) {
    case 1: return true;
    case 2: return false;
    default: return std::nullopt;
    }
}

} // namespace

const Theme& Theme::darkTheme()
{
    static const Theme theme = makeDark();
    return theme;
}

const Theme& Theme::lightTheme()
{
    static const Theme theme = makeLight();
    return theme;
}

const Theme& Theme::desktopTheme()
{
    static const bool dark = [] {
        if (std::optional<bool> portal = portalPrefersDark())
            return *portal;
        return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5;
    }();
    return dark ? darkTheme() : lightTheme();
}

QFont Theme::font(qreal pointSize, QFont::Weight weight)
{
    QFont f = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    f.setPointSizeF(pointSize);
    f.setWeight(weight);
    return f;
}

QFont Theme::monoFont(qreal pointSize, QFont::Weight weight)
{
    QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    f.setPointSizeF(pointSize);
    f.setWeight(weight);
    return f;
}

QColor Theme::withOpacity(QColor color, qreal opacity)
{
    color.setAlphaF(color.alphaF() * opacity);
    return color;
}

} // namespace tallowmere
