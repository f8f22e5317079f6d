#pragma once

#include <QObject>

namespace tallowmere {

class PreferencesStore;

// The three program-wide switches. Each assignment is written to the store at once, even
// when the value does not change; observers hear only of real changes.
class AppSettings : public QObject {
    Q_OBJECT
public:
    explicit AppSettings(PreferencesStore& store, QObject* parent = nullptr);

    bool menuBarEnabled() const { return menuBarEnabled_; }
    bool localServerEnabled() const { return localServerEnabled_; }
    bool networkRecordingEnabled() const { return networkRecordingEnabled_; }

    void setMenuBarEnabled(bool enabled);
    void setLocalServerEnabled(bool enabled);
    void setNetworkRecordingEnabled(bool enabled);

    PreferencesStore& store() const { return store_; }

signals:
    void menuBarEnabledChanged();
    void localServerEnabledChanged();
    void networkRecordingEnabledChanged();

private:
    PreferencesStore& store_;
    bool menuBarEnabled_ = false;
    bool localServerEnabled_ = false;
    bool networkRecordingEnabled_ = true;
};

} // namespace tallowmere
