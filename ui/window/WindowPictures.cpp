#include "ui/window/WindowPictures.h"

#include "ui/window/MainWindow.h"

#include <QApplication>

namespace tallowmere {

namespace {
QString fileName(const QString& title, const QString& suffix)
{
    QString name = title.toLower().replace(u' ', u'-');
    return QStringLiteral("window-") + name + (suffix.isEmpty() ? QString() : u'-' + suffix) + QStringLiteral(".png");
}
} // namespace

QList<std::pair<QString, QImage>> renderWindowPages(WindowServices services, const Theme& theme, const QString& suffix)
{
    MainWindow window(theme, std::move(services));
    window.resize(1280, 860);
    window.show();
    QList<std::pair<QString, QImage>> pictures;
    const auto take = [&](const QString& title) {
        QApplication::processEvents();
        pictures.append({fileName(title, suffix), window.grab().toImage()});
    };
    for (SpecCategory category : allSpecCategories()) {
        window.select(SidebarSelection::spec(category));
        take(categoryTitle(category));
    }
    window.select(SidebarSelection::settingsPage());
    take(QStringLiteral("Settings"));
    window.hide();
    return pictures;
}

} // namespace tallowmere
