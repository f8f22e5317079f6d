#pragma once

#include "app/ForegroundSeam.h"

namespace tallowmere {

// Headless runs have no windows: nothing to create, show or hide.
class HeadlessSeam final : public ForegroundSeam {
public:
    void createMainWindow(AppServices&) override {}
    bool hasMainWindow() const override { return false; }
    void showMainWindow() override {}
    bool hasVisibleWindow() const override { return false; }
    void setForeground(bool) override {}
    void terminate() override {}
};

} // namespace tallowmere
