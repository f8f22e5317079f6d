#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace tallowmere {

// Turns SIGINT and SIGTERM into an orderly QCoreApplication::quit(), so that everything
// watching aboutToQuit (keep-awake locks, the usage store) gets to finish.
class SignalQuit : public QObject {
    Q_OBJECT
public:
    explicit SignalQuit(QObject* parent = nullptr);
    ~SignalQuit() override;

signals:
    void signalled(int signalNumber);

private:
    void drain();
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace tallowmere
