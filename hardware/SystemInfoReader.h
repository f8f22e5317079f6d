#pragma once

#include "hardware/SystemInfo.h"

namespace tallowmere {

// Gathers a SystemInfo from the kernel's files below the roots of `sources`: DMI and the
// device tree for the machine's identity, cpuinfo and the CPU topology, meminfo, os-release,
// mountinfo, DRM cards named through pci.ids, optical drives, USB devices named through
// usb.ids, ALSA cards, and the live interface addresses.
class SystemInfoReader {
public:
    explicit SystemInfoReader(SystemInfoSources sources = {}) : sources_(std::move(sources)) {}

    SystemInfo read() const;

private:
    void readIdentity(SystemInfo& info) const;
    void readProcessor(SystemInfo& info) const;
    void readOperatingSystem(SystemInfo& info) const;
    void readStorage(SystemInfo& info) const;
    QStringList readGpus() const;
    QStringList readOpticalDrives() const;
    QStringList readPeripherals() const;
    QByteArray readFile(const QString& root, const QString& relative) const;
    std::optional<QString> firmwareFile(const QString& relative) const;

    SystemInfoSources sources_;
};

} // namespace tallowmere
