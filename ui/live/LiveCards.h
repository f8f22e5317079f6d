#pragma once

#include "ui/pages/SpecCategory.h"

namespace tallowmere {

class InventoryPage;
struct Theme;
struct WindowServices;

// Fills the live area of a page that has one with the cards of its category; a card whose
// service is absent (some tests) is left out.
void addLiveCards(const Theme& theme, const WindowServices& services, SpecCategory category, InventoryPage& page);

// One per live page, each in its own file.
void addCpuLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page);
void addMemoryLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page);
void addDiskLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page);
void addNetworkLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page);
void addBatteryLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page);
void addCameraLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page);

} // namespace tallowmere
