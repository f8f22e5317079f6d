#pragma once

#include "audio/PulseSnapshot.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace tallowmere {

// A thin client of the PulseAudio-protocol sound server (PulseAudio, or PipeWire's service of
// the same protocol). The server's main loop runs on a thread of its own; answers and events
// reach this object's signals on the main thread. It never starts a server itself, and after
// the server goes away it tries again every `retryDelay` until one answers.
class PulseClient : public QObject {
    Q_OBJECT
public:
    struct Options {
        QByteArray server; // e.g. "unix:/run/user/1000/pulse/native"; empty: the user's own
        std::chrono::milliseconds retryDelay{2000};
    };

    explicit PulseClient(Options options, QObject* parent = nullptr);
    ~PulseClient() override;
    PulseClient(const PulseClient&) = delete;
    PulseClient& operator=(const PulseClient&) = delete;

    bool isConnected() const { return connected_; }

    // Asks for the streams and the default output; snapshotReady follows (empty when no
    // server answers). A request made while one is under way is answered by a second round.
    void requestSnapshot();
    // Sets every channel of a playing stream to the linear amplitude `gain` (0...1).
    void setStreamVolume(std::uint32_t index, int channels, float gain);

    // Descriptions of the output and input devices, sorted, without duplicates and without
    // the monitors of outputs; absent when no server answers. Blocks for one round trip, so
    // it may be called from any thread except the client's own.
    std::optional<QStringList> deviceDescriptions() const;

    // Requests sent to the server since creation (events received are not counted).
    quint64 requestCount() const;

signals:
    void connectedChanged(bool connected);
    void snapshotReady(const tallowmere::PulseSnapshot& snapshot);
    // A new playing stream, or a change of the server's defaults.
    void streamsAppeared();

private:
    struct Loop;
    void setConnected(bool connected);

    std::unique_ptr<Loop> loop_;
    bool connected_ = false;
};

} // namespace tallowmere
