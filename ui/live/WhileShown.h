#pragma once

#include <functional>

class QWidget;

namespace tallowmere {

class MonitoringService;

// Calls `onChange(true)` when `widget` comes on screen and `onChange(false)` when it leaves it
// (another page chosen, the window hidden, minimised or closed, or the widget destroyed), once
// per change. Live cards use it so nothing samples for a page nobody sees.
void whileShown(QWidget* widget, std::function<void(bool shown)> onChange);

// The usual use: the service's page flag follows the widget, and its loops follow the flags.
void demandWhileShown(QWidget* widget, MonitoringService* service);

} // namespace tallowmere
