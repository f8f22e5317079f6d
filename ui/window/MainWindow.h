#pragma once

#include "ui/pages/SpecPages.h"
#include "ui/window/NavigationHistory.h"
#include "ui/window/UpdateAlert.h"
#include "ui/window/WindowServices.h"

#include <QHash>
#include <QMainWindow>

class QAction;
class QListWidget;
class QListWidgetItem;
class QMessageBox;
class QStackedWidget;

namespace tallowmere {

struct Theme;

// The program's full view: the sidebar of categories, the selected page, the toolbar with back,
// forward and Refresh, and the alert offering a newer version. Pages are built the first time
// they are shown. Closing only hides the window.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(const Theme& theme, WindowServices services, QWidget* parent = nullptr);
    ~MainWindow() override;

    const NavigationHistory& history() const { return history_; }
    // Selects in the sidebar as the user would; nothing clears the selection.
    void select(std::optional<SidebarSelection> selection);
    void goBack();
    void goForward();
    // Gathers the inventory again and updates the pages built so far.
    void refresh();

    QWidget* currentPage() const;
    QAction* backAction() const { return back_; }
    QAction* forwardAction() const { return forward_; }
    QAction* refreshAction() const { return refresh_; }
    QMessageBox* updateAlert() const { return alert_; }
    QListWidget* sidebar() const { return sidebar_; }
    const PageInputs& inputs() const { return inputs_; }

signals:
    void closed();
    void pageShown(QWidget* page);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildToolbar();
    void buildSidebar();
    void addSidebarRow(int key, const QString& icon, const QString& title);
    void addSidebarHeader(const QString& title);
    void onSidebarSelectionChanged();
    void showPage(const std::optional<SidebarSelection>& selection);
    QWidget* pageFor(const SidebarSelection& selection);
    void updateActions();
    void onUpdateStateChanged();

    const Theme& theme_;
    WindowServices services_;
    PageInputs inputs_;
    NavigationHistory history_;
    UpdateAlertGate alertGate_;
    QListWidget* sidebar_ = nullptr;
    QStackedWidget* stack_ = nullptr;
    QWidget* emptyState_ = nullptr;
    QHash<int, QWidget*> pages_;
    QAction* back_ = nullptr;
    QAction* forward_ = nullptr;
    QAction* refresh_ = nullptr;
    QMessageBox* alert_ = nullptr;
};

} // namespace tallowmere
