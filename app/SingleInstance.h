#pragma once

#include "core/UniqueFd.h"

#include <QObject>
#include <QString>

#include <memory>

class QLocalServer;

namespace tallowmere {

// One running copy per user, windowed or headless. The copy that holds the lock (an flock on
// a file beside the socket, which the kernel drops however the process ends) listens on a
// local socket; a later windowed start hands it a reopen request there.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    enum class Claim {
        ours,        // this is the running copy now
        anotherRuns, // someone holds the lock
        unavailable, // neither lock nor socket could be made
    };

    // The default name lives in the user's runtime folder, so each user has their own.
    explicit SingleInstance(QString name = defaultName(), QObject* parent = nullptr);
    ~SingleInstance() override;

    static QString defaultName();

    // Takes the lock and, when it is ours, listens for reopen requests; `error` tells why
    // the claim is unavailable.
    Claim claim(QString* error = nullptr);
    // Asks the running copy to show its window; true when it took the request.
    bool handOverReopen();

signals:
    void reopenRequested();

private:
    bool listen(QString* error);
    void serve();

    QString name_;
    UniqueFd lock_;
    std::unique_ptr<QLocalServer> server_;
};

} // namespace tallowmere
